#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/session/LockSource.h"

#include <gdk/gdk.h>

namespace kelo::session {

/// The lock screen as the X server shows it, asked on the toolkit's connection. The display must be
/// an X11 display. Main thread only.
class X11LockScreen final : public LockScreenProbe {
public:
    explicit X11LockScreen(GdkDisplay* display);
    ~X11LockScreen() override;
    X11LockScreen(const X11LockScreen&) = delete;
    X11LockScreen& operator=(const X11LockScreen&) = delete;

    /// Takes no grab itself, not even for a moment. Grabs of this program do not count.
    bool isKeyboardGrabbed() override;
    bool isMonitorCovered() override;

private:
    gobject::GObjectPointer<GdkDisplay> display;
    unsigned long neverShown;
};

} // namespace kelo::session
