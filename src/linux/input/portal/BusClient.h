#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>

namespace kelo::input {

/// A counted reference to a value of the bus.
struct GVariantDeleter {
    void operator()(GVariant* value) const { g_variant_unref(value); }
};
using GVariantOwner = std::unique_ptr<GVariant, GVariantDeleter>;

using BusConnection = gobject::GObjectPointer<GDBusConnection>;

/// An object of another program on the bus.
struct BusObject {
    std::string owner;
    std::string path;
};

/// Calls other programs without waiting. When it goes, the calls that are under way are given up,
/// and no answer comes any more. Main thread only.
class BusCalls {
public:
    /// Gets the answer, or null and the reason.
    using Answered = std::function<void(GVariantOwner answer, gobject::GErrorPointer failure)>;

    BusCalls() = default;
    ~BusCalls();
    BusCalls(const BusCalls&) = delete;
    BusCalls& operator=(const BusCalls&) = delete;

    /// Takes over floating parameters. Starts nobody who is not there.
    void call(const BusConnection& connection, const BusObject& object, const char* interface,
              const char* method, GVariant* parameters, Answered answered) const;
    /// Opens a connection of its own to the bus at an address; null when that fails.
    void connect(const std::string& address, std::function<void(BusConnection)> connected) const;

private:
    gobject::GObjectPointer<GCancellable> cancellable =
        gobject::GObjectPointer<GCancellable>::adopt(g_cancellable_new());
};

/// Calls a method without parameters, whose answer does not matter. The connection stays until the
/// answer is there, also when nobody else has it any more.
void tellBus(const BusConnection& connection, const BusObject& object, const char* interface,
             const char* method);

/// Hears one signal from one program until it goes. The handler may let it go. Main thread only.
class BusSignal {
public:
    /// Gets the path of the object that sent it, and the signal's values.
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

/// Tells who owns a name of the bus, first of all who owns it now; asks the bus to start somebody
/// when nobody does. Main thread only.
class BusNameWatch {
public:
    /// Gets the unique name of the owner; empty when there is none, or the bus is gone.
    using Changed = std::function<void(const std::string& owner)>;

    BusNameWatch(const BusConnection& connection, const char* name, Changed changed);
    ~BusNameWatch();
    BusNameWatch(const BusNameWatch&) = delete;
    BusNameWatch& operator=(const BusNameWatch&) = delete;

private:
    guint watch;
};

/// Where the session's bus listens; empty when there is none. Starts no bus.
std::string sessionBusAddress();

} // namespace kelo::input
