#pragma once

#include "linux/bus/Connection.h"

#include <functional>
#include <string>

namespace kelo::bus {

/// A subscription to one signal of one program. Destroying it unsubscribes; the handler may do so.
/// Main thread only.
class Signal {
public:
    /// Receives the path of the sending object and the signal's values, which are a tuple.
    using Heard = std::function<void(const std::string& path, GVariant* values)>;

    /// object: what sends the signal. With an empty path, every object of its owner.
    Signal(Connection connection, const Object& object, const char* signal, Heard heard);
    ~Signal();
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

private:
    Connection connection;
    guint subscription;
};

} // namespace kelo::bus
