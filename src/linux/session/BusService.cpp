#include "linux/session/BusService.h"

#include "base/async/MainLoop.h"
#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>
#include <giomm/asyncresult.h>
#include <giomm/init.h>
#include <glibmm/error.h>

#include <utility>

namespace kelo::session {

void Bus::whenReady(Ready ready) {
    waiting.push_back(std::move(ready));
    if (isFinished)
        MainLoop::main().post([self = shared_from_this()] { self->finish(self->connection); });
    else if (!std::exchange(isConnecting, true))
        connect();
}

void Bus::connect() {
    if (address.empty()) {
        MainLoop::main().post([self = shared_from_this()] { self->finish({}); });
        return;
    }
    // Does nothing where the toolkit has done so.
    Gio::init();
    using Flags = Gio::DBus::ConnectionFlags;
    Gio::DBus::Connection::create_for_address(
        address,
        [self = shared_from_this()](const Glib::RefPtr<Gio::AsyncResult>& result) {
            try {
                self->finish(Gio::DBus::Connection::create_for_address_finish(result));
            } catch (const Glib::Error& error) {
                g_debug("session: a bus cannot be reached: %s", error.what());
                self->finish({});
            }
        },
        Flags::AUTHENTICATION_CLIENT | Flags::MESSAGE_BUS_CONNECTION);
}

void Bus::finish(const Connection& made) {
    isFinished = true;
    connection = made;
    for (const Ready& ready : std::exchange(waiting, {}))
        ready(connection);
}

struct BusService::Life {};

BusService::BusService(Bus& bus, std::string name, std::function<void()> came,
                       std::function<void()> gone)
    : name(std::move(name)),
      came(std::move(came)),
      gone(std::move(gone)),
      ownLife(std::make_shared<Life>()) {
    bus.whenReady([this, life = std::weak_ptr(ownLife)](const Bus::Connection& made) {
        if (!life.expired())
            connected(made);
    });
}

BusService::~BusService() {
    stopHearing();
    if (watch)
        Gio::DBus::unwatch_name(watch);
}

void BusService::connected(const Bus::Connection& made) {
    if (!made)
        return gone();
    connection = made;
    const std::weak_ptr<Life> life = ownLife;
    watch = Gio::DBus::watch_name(
        connection, name,
        [this, life](const Glib::RefPtr<Gio::DBus::Connection>&, const Glib::ustring&,
                     const Glib::ustring& newOwner) {
            if (!life.expired())
                ownerChanged(newOwner);
        },
        [this, life](const Glib::RefPtr<Gio::DBus::Connection>&, const Glib::ustring&) {
            if (!life.expired())
                ownerChanged({});
        });
}

void BusService::ownerChanged(const Glib::ustring& newOwner) {
    stopHearing();
    owner = newOwner;
    ownersLife = owner.empty() ? nullptr : std::make_shared<Life>();
    (owner.empty() ? gone : came)();
}

void BusService::call(const std::string& path, const std::string& interface,
                      const std::string& method, const Values& arguments, Answered answered,
                      Failed failed) const {
    if (owner.empty())
        return;
    connection->call(
        path, interface, method, arguments,
        [bus = connection, life = std::weak_ptr(ownersLife), what = name + " " + method,
         answered = std::move(answered),
         failed = std::move(failed)](const Glib::RefPtr<Gio::AsyncResult>& result) {
            Values values;
            try {
                values = bus->call_finish(result);
            } catch (const Glib::Error& error) {
                g_debug("session: %s: %s", what.c_str(), error.what());
            }
            if (life.expired())
                return;
            if (values)
                answered(values);
            else
                failed();
        },
        owner, -1, Gio::DBus::CallFlags::NO_AUTO_START);
}

void BusService::hear(const std::string& path, const std::string& interface,
                      const std::string& signal, Answered heard) {
    if (owner.empty())
        return;
    subscriptions.push_back(connection->signal_subscribe(
        [life = std::weak_ptr(ownersLife), heard = std::move(heard)](
            const Glib::RefPtr<Gio::DBus::Connection>&, const Glib::ustring&, const Glib::ustring&,
            const Glib::ustring&, const Glib::ustring&, const Values& values) {
            if (!life.expired())
                heard(values);
        },
        owner, interface, signal, path));
}

void BusService::stopHearing() {
    for (const guint subscription : std::exchange(subscriptions, {}))
        connection->signal_unsubscribe(subscription);
}

std::string systemBusAddress() {
    const gobject::GText address(
        g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    return address ? address.get() : "";
}

std::string sessionBusAddress() {
    // GLib's own lookup could start a new bus, on which there would be no screen saver.
    if (const char* const address = g_getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address)
        return address;
    const gobject::GText path(g_build_filename(g_get_user_runtime_dir(), "bus", nullptr));
    if (!g_file_test(path.get(), G_FILE_TEST_EXISTS))
        return "";
    const gobject::GText escaped(g_dbus_address_escape_value(path.get()));
    return std::string("unix:path=") + escaped.get();
}

} // namespace kelo::session
