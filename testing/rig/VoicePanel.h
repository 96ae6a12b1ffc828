#pragma once

#include "testing/rig/Screen.h"
#include "testing/screen/WindowEvents.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace kelo::rig {

/// The voice panel as its user has it: a window of Kelo's that no window manager manages, on the
/// screen or not. Waits for what happens to windows, and for nothing else.
class VoicePanel {
public:
    /// Nothing when it is not on the screen. The program is Kelo's process.
    std::optional<ScreenWindow> shown(pid_t program) const;
    /// Throws std::runtime_error when it does not come, or does not go, in time.
    ScreenWindow awaitShown(pid_t program) const;
    void awaitHidden(pid_t program) const;

    /// The panel itself within its window, which has room for a shadow around it.
    Area contents(const ScreenWindow& panel) const;
    /// The keys go to the window, or to one inside it (toolkits keep one there for them).
    bool hasKeyboard(const ScreenWindow& window) const;

private:
    const screen::WindowEvents events;
    const screen::Windows windows{events.connection()};
};

} // namespace kelo::rig
