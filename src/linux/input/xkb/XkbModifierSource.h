#pragma once

#include "linux/input/source/ModifierSource.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace kelo::input {

class XkbWatch;

/// The modifiers as the X server reports them, over a connection of its own. Covers every window
/// and every keyboard, the user's layout and sticky keys. Grabs nothing. A change that leaves the
/// flags as they were (a second Control key, Num Lock) is not reported.
///
/// Asks the server for presses of other keys and of mouse buttons only while Control or Option is
/// down: no other text that is typed comes to this program.
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
    void onOtherPress(std::function<void()> handler) override { otherPress = std::move(handler); }

private:
    std::string displayName;
    std::function<void()> otherPress;
    std::unique_ptr<XkbWatch> watch;
};

} // namespace kelo::input
