#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/input/source/ModifierSource.h"

typedef struct _GdkDevice GdkDevice;

namespace kelo::input {

/// What the toolkit learns of the modifiers, which is what happens while a window of ours has the
/// keyboard. For displays that keep everything else to themselves. GTK must be up to start it.
class OwnWindowsModifierSource final : public ModifierSource {
public:
    OwnWindowsModifierSource() = default;
    ~OwnWindowsModifierSource() override;
    OwnWindowsModifierSource(const OwnWindowsModifierSource&) = delete;
    OwnWindowsModifierSource& operator=(const OwnWindowsModifierSource&) = delete;

    std::string name() const override { return "own windows"; }
    Availability availability() const override;
    bool coversOwnWindows() const override { return true; }
    bool start(Handler handler) override;

private:
    void changed();

    Handler handler;
    gobject::GObjectPointer<GdkDevice> keyboard;
    unsigned long connection = 0;
};

} // namespace kelo::input
