#pragma once

#include "linux/input/ToplevelWatch.h"
#include "linux/input/source/KeyboardFocus.h"

namespace kelo::input {

/// Asks the toolkit which of our windows is active; for displays that do not tell of the keyboard
/// focus themselves. A change is told once the toolkit has dealt with all that came with it.
class ActiveWindowFocus final : public KeyboardFocus {
public:
    ActiveWindowFocus();
    ~ActiveWindowFocus() override;
    ActiveWindowFocus(const ActiveWindowFocus&) = delete;
    ActiveWindowFocus& operator=(const ActiveWindowFocus&) = delete;

    bool isOurs() const override { return activeToplevel() != nullptr; }
    void onChange(std::function<void()> changed) override;

private:
    struct Pending;
    std::shared_ptr<Pending> pending;
    ToplevelWatch toplevels;
};

} // namespace kelo::input
