#pragma once

#include "linux/input/source/ModifierSource.h"

#include <memory>
#include <string>

namespace kelo::input {

class XkbWatch;

/// The X server's own account of the modifiers, on a connection of its own: whichever window has
/// the keyboard, whichever keyboard they are pressed on, with sticky keys and the user's layout
/// dealt with. Nothing is grabbed and no key is seen. Changes that come to the same flags (a second
/// Control key, Num Lock) are not told.
class XkbModifierSource final : public ModifierSource {
public:
    /// A display by its name; empty for the one of the environment.
    explicit XkbModifierSource(std::string displayName = {});
    ~XkbModifierSource() override;
    XkbModifierSource(const XkbModifierSource&) = delete;
    XkbModifierSource& operator=(const XkbModifierSource&) = delete;

    std::string name() const override { return "X11"; }
    Availability availability() const override;
    bool coversOwnWindows() const override { return true; }
    bool start(Handler handler) override;

private:
    std::string displayName;
    std::unique_ptr<XkbWatch> watch;
};

} // namespace kelo::input
