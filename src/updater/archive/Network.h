#pragma once

#include <functional>

namespace kelo::updater {

/// What is known of this computer's network. Main thread only.
class Network {
public:
    virtual ~Network() = default;
    /// Whether what is transferred costs the user something.
    virtual bool isMetered() const = 0;
    /// Calls the action, in place of the one before, each time the network is there again after it
    /// was gone. Null for none.
    virtual void whenAvailable(std::function<void()> action) = 0;
};

} // namespace kelo::updater
