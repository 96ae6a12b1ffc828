#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>

namespace kelo::input {

/// Names of the desktop's portal, as its interfaces define them.
namespace portal {

inline constexpr const char* busName = "org.freedesktop.portal.Desktop";
inline constexpr const char* path = "/org/freedesktop/portal/desktop";
inline constexpr const char* globalShortcuts = "org.freedesktop.portal.GlobalShortcuts";
inline constexpr const char* request = "org.freedesktop.portal.Request";
inline constexpr const char* session = "org.freedesktop.portal.Session";
inline constexpr const char* registry = "org.freedesktop.host.portal.Registry";

} // namespace portal

/// Drops a reference to a D-Bus value.
struct GVariantDeleter {
    void operator()(GVariant* value) const { g_variant_unref(value); }
};
using GVariantOwner = std::unique_ptr<GVariant, GVariantDeleter>;

using BusConnection = gobject::GObjectPointer<GDBusConnection>;

/// An object that another program exports on the bus.
struct BusObject {
    std::string owner;
    std::string path;
};

/// Calls other programs asynchronously. The destructor cancels pending calls: their callbacks are
/// not called any more. Main thread only.
class BusCalls {
public:
    /// Receives the response, or null and the error.
    using Answered = std::function<void(GVariantOwner answer, gobject::GErrorPointer failure)>;

    BusCalls() = default;
    ~BusCalls();
    BusCalls(const BusCalls&) = delete;
    BusCalls& operator=(const BusCalls&) = delete;

    /// Takes ownership of floating parameters. Does not start a service that is not running.
    void call(const BusConnection& connection, const BusObject& object, const char* interface,
              const char* method, GVariant* parameters, Answered answered) const;
    /// Opens a new connection to the bus at this address. The callback receives null on failure.
    void connect(const std::string& address, std::function<void(BusConnection)> connected) const;

private:
    gobject::GObjectPointer<GCancellable> cancellable =
        gobject::GObjectPointer<GCancellable>::adopt(g_cancellable_new());
};

/// Calls a method without parameters and ignores the response. Keeps the connection open until the
/// response arrives.
void tellBus(const BusConnection& connection, const BusObject& object, const char* interface,
             const char* method);

/// A subscription to one signal of one program. Destroying it unsubscribes; the handler may do so.
/// Main thread only.
class BusSignal {
public:
    /// Receives the path of the sending object and the signal's values.
    using Heard = std::function<void(const std::string& path, GVariant* values)>;

    BusSignal(BusConnection connection, const std::string& sender, const char* interface,
              const char* signal, Heard heard);
    ~BusSignal();
    BusSignal(const BusSignal&) = delete;
    BusSignal& operator=(const BusSignal&) = delete;

private:
    BusConnection connection;
    guint subscription;
};

/// Reports the owner of a bus name: first the current one, then each change. Asks the bus to start
/// the service if the name has no owner. Main thread only.
class BusNameWatch {
public:
    /// Receives the unique name of the owner; empty without an owner or without a connection.
    using Changed = std::function<void(const std::string& owner)>;

    BusNameWatch(const BusConnection& connection, const char* name, Changed changed);
    ~BusNameWatch();
    BusNameWatch(const BusNameWatch&) = delete;
    BusNameWatch& operator=(const BusNameWatch&) = delete;

private:
    guint watch;
};

/// The address of the session bus; empty if there is none. Starts no bus.
std::string sessionBusAddress();

} // namespace kelo::input
