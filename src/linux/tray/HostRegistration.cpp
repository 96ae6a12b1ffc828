#include "linux/tray/HostRegistration.h"

#include <giomm/dbuswatchname.h>
#include <glibmm/error.h>
#include <glibmm/variant.h>

#include <tuple>

namespace kelo::tray {

namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";

} // namespace

// The path alone: the tray then reaches us by the name that the bus gave this connection. A name of
// the item's own, which some programs take, would have to be allowed to a program in a sandbox.
HostRegistration::HostRegistration(const Glib::RefPtr<Gio::DBus::Connection>& connection,
                                   std::string itemPath)
    : watch(Gio::DBus::watch_name(
          connection, watcherName,
          [path = std::move(itemPath)](const Glib::RefPtr<Gio::DBus::Connection>& bus,
                                       const Glib::ustring&, const Glib::ustring& owner) {
              bus->call(
                  watcherPath, watcherName, "RegisterStatusNotifierItem",
                  Glib::Variant<std::tuple<Glib::ustring>>::create({path}),
                  [bus](const Glib::RefPtr<Gio::AsyncResult>& result) {
                      try {
                          bus->call_finish(result);
                      } catch (const Glib::Error& error) {
                          g_debug("The tray does not take the item: %s", error.what());
                      }
                  },
                  owner);
          })) {}

HostRegistration::~HostRegistration() {
    Gio::DBus::unwatch_name(watch);
}

} // namespace kelo::tray
