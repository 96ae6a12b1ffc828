#pragma once

#include <functional>
#include <memory>

namespace kelo::input {

/// Whether the keyboard is one of our windows' at this moment. Main thread only.
class KeyboardFocus {
public:
    virtual ~KeyboardFocus() = default;
    virtual bool isOurs() const = 0;
    /// Has the function called each time that the answer may have changed, if this kind of display
    /// tells. At most one function, held until this goes.
    virtual void onChange(std::function<void()>) {}
};

} // namespace kelo::input
