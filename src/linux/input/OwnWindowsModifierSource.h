#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/input/source/ModifierSource.h"

typedef struct _GdkDevice GdkDevice;

namespace kelo::input {

/// Converts the toolkit's modifiers (GdkModifierType) to the seam's flags.
platform::ModifierFlags flagsFromGdk(unsigned state);

/// The modifiers as the toolkit knows them. It sees them only while a window of ours has the
/// keyboard. GTK must be initialized before start().
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
