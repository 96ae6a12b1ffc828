#pragma once

#include "linux/input/source/KeyboardFocus.h"
#include "linux/window/Toplevels.h"

namespace kelo::input {

/// The keyboard focus as the toolkit knows it, for displays that cannot be asked for it. A change
/// is reported once the toolkit has handled all events that belong to it.
class ActiveWindowFocus final : public KeyboardFocus {
public:
    ActiveWindowFocus();
    ~ActiveWindowFocus() override;
    ActiveWindowFocus(const ActiveWindowFocus&) = delete;
    ActiveWindowFocus& operator=(const ActiveWindowFocus&) = delete;

    bool isOurs() const override { return window::activeToplevel() != nullptr; }
    void onChange(std::function<void()> changed) override;

private:
    struct Pending;
    std::shared_ptr<Pending> pending;
    window::ToplevelWatch toplevels;
};

} // namespace kelo::input
