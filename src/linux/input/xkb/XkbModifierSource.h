#pragma once

#include "linux/input/source/ModifierSource.h"

#include <memory>
#include <string>

namespace kelo::input {

class XkbWatch;

/// The modifiers as the X server reports them, over a connection of its own. Covers every window
/// and every keyboard, the user's layout and sticky keys. Grabs nothing and sees no other key. A
/// change that leaves the flags as they were (a second Control key, Num Lock) is not reported.
class XkbModifierSource final : public ModifierSource {
public:
    /// displayName: if empty, the display that the environment names.
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
