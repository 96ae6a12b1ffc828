#pragma once

#include "linux/bus/Connection.h"

#include <functional>
#include <memory>
#include <string>

namespace kelo::bus {

/// Whether the bus is asked to start a service that is not running.
enum class Starting { never, ifNeeded };

/// Reports the owner of a bus name: first the current one, then each change. Main thread only.
class NameWatch {
public:
    /// Receives the open connection, and the unique name of the owner. The name is empty without an
    /// owner. Both are, once, if the bus cannot be reached. May destroy the watch.
    using Changed = std::function<void(const Connection& connection, const std::string& owner)>;

    /// Reports in a later turn of the main loop.
    NameWatch(SharedConnection& bus, std::string name, Starting starting, Changed changed);
    ~NameWatch();
    NameWatch(const NameWatch&) = delete;
    NameWatch& operator=(const NameWatch&) = delete;

private:
    struct State;

    std::shared_ptr<State> state;
};

} // namespace kelo::bus
