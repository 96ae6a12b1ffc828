#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/input/source/KeyboardFocus.h"

typedef struct _GdkDisplay GdkDisplay;

namespace kelo::input {

/// Asks the X server at each call, which costs one round trip. Unmanaged windows count, and so do
/// the requests that we have just sent. Does not report changes.
class X11KeyboardFocus final : public KeyboardFocus {
public:
    /// display: must be an X11 display.
    explicit X11KeyboardFocus(GdkDisplay* display);
    bool isOurs() const override;

private:
    bool isUnderPointer() const;

    gobject::GObjectPointer<GdkDisplay> display;
};

} // namespace kelo::input
