#pragma once

#include "linux/bus/Connection.h"
#include "linux/gobject/GLibHandles.h"

#include <functional>

namespace kelo::bus {

/// How long an answer is waited for: the bus library's 25 s, or until the other program is gone.
enum class Patience { usual, endless };

/// Calls other programs asynchronously. The destructor cancels pending calls: their callbacks are
/// not called any more. Main thread only.
class Calls {
public:
    /// Receives the response, which is a tuple, or null and the error. May destroy the Calls.
    using Answered =
        std::function<void(gobject::GVariantPointer answer, gobject::GErrorPointer failure)>;

    Calls() = default;
    ~Calls();
    Calls(const Calls&) = delete;
    Calls& operator=(const Calls&) = delete;

    /// Takes ownership of floating parameters, which are a tuple or null. Does not start a service
    /// that is not running.
    void call(const Connection& connection, const Object& object, const char* method,
              GVariant* parameters, Answered answered, Patience patience = Patience::usual) const;

private:
    gobject::GObjectPointer<GCancellable> cancellable =
        gobject::GObjectPointer<GCancellable>::adopt(g_cancellable_new());
};

/// Calls a method without parameters and ignores the response. Keeps the connection open until the
/// response arrives.
void tell(const Connection& connection, const Object& object, const char* method);

} // namespace kelo::bus
