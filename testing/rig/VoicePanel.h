#pragma once

#include "testing/rig/Screen.h"
#include "testing/screen/WindowEvents.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace kelo::rig {

/// The voice panel as its user sees it: a window of Kelo that no window manager manages. Waits for
/// events of windows only.
class VoicePanel {
public:
    /// Empty if it is not on the screen. The program is Kelo's process.
    std::optional<ScreenWindow> shown(pid_t program) const;
    /// Throws std::runtime_error if it does not appear, or disappear, in time.
    ScreenWindow awaitShown(pid_t program) const;
    void awaitHidden(pid_t program) const;

    /// The panel itself within its window, which has room for a shadow around it.
    Area contents(const ScreenWindow& panel) const;
    /// Whether the window has the keyboard, or a window inside it: toolkits keep one for that.
    bool hasKeyboard(const ScreenWindow& window) const;

private:
    const screen::WindowEvents events;
    const screen::Windows windows{events.connection()};
};

} // namespace kelo::rig
