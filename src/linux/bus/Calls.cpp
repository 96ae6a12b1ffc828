#include "linux/bus/Calls.h"

#include "linux/bus/HeapFunction.h"

#include <string>
#include <utility>

namespace kelo::bus {

namespace {

constexpr int usualTimeout = -1;
constexpr int noTimeout = G_MAXINT;

struct Pending {
    std::string method;
    Calls::Answered answered;
};

void finished(GObject* source, GAsyncResult* result, gpointer data) {
    const auto pending = takeBack<Pending>(data);
    GError* error = nullptr;
    gobject::GVariantPointer answer(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
    gobject::GErrorPointer failure(error);
    if (failure && g_error_matches(failure.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED))
        return;
    if (failure)
        g_debug("bus: %s: %s", pending->method.c_str(), failure->message);
    pending->answered(std::move(answer), std::move(failure));
}

void start(const Connection& connection, const Object& object, const char* method,
           GVariant* parameters, Patience patience, GCancellable* cancellable,
           GAsyncReadyCallback callback, gpointer data) {
    g_dbus_connection_call(
        connection.get(), object.owner.c_str(), object.path.c_str(), object.interface.c_str(),
        method, parameters, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
        patience == Patience::endless ? noTimeout : usualTimeout, cancellable, callback, data);
}

} // namespace

Calls::~Calls() {
    g_cancellable_cancel(cancellable.get());
}

void Calls::call(const Connection& connection, const Object& object, const char* method,
                 GVariant* parameters, Answered answered, Patience patience) const {
    start(connection, object, method, parameters, patience, cancellable.get(), finished,
          give(Pending{object.interface + "." + method, std::move(answered)}));
}

void tell(const Connection& connection, const Object& object, const char* method) {
    // A pending call keeps the connection alive. Without the callback, the connection could be
    // closed before the call is written.
    const GAsyncReadyCallback answered = [](GObject* source, GAsyncResult* result, gpointer) {
        const gobject::GVariantPointer answer(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
    };
    start(connection, object, method, nullptr, Patience::usual, nullptr, answered, nullptr);
}

} // namespace kelo::bus
