#pragma once

#include <functional>
#include <memory>

namespace kelo::input {

/// Tells whether a window of ours has the keyboard. Main thread only.
class KeyboardFocus {
public:
    virtual ~KeyboardFocus() = default;
    virtual bool isOurs() const = 0;
    /// Sets the function that is called when isOurs() may have changed. Kept until the destructor.
    /// Never called if this kind of display does not report changes.
    virtual void onChange(std::function<void()>) {}
};

} // namespace kelo::input
