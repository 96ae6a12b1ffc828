#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/input/source/KeyboardFocus.h"

typedef struct _GdkDisplay GdkDisplay;

namespace kelo::input {

/// Asks the X server, one round trip at each look: windows that no window manager knows count, and
/// what we asked for just before is taken into account. Tells of no changes.
class X11KeyboardFocus final : public KeyboardFocus {
public:
    /// A display of the X11 kind.
    explicit X11KeyboardFocus(GdkDisplay* display);
    bool isOurs() const override;

private:
    bool isUnderPointer() const;

    gobject::GObjectPointer<GdkDisplay> display;
};

} // namespace kelo::input
