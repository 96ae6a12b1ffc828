#include "linux/tray/WatcherRegistration.h"

#include <giomm/dbuswatchname.h>
#include <glibmm/error.h>
#include <glibmm/variant.h>

#include <tuple>

namespace kelo::tray {

namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";

} // namespace

// The path is enough: the watcher then uses this connection's unique name. Some programs own a
// separate bus name for the item instead, but a sandbox would have to allow that name.
WatcherRegistration::WatcherRegistration(const Glib::RefPtr<Gio::DBus::Connection>& connection,
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
                          g_debug("tray: the item is registered");
                      } catch (const Glib::Error& error) {
                          g_debug("tray: the item is not accepted: %s", error.what());
                      }
                  },
                  owner);
          })) {}

WatcherRegistration::~WatcherRegistration() {
    Gio::DBus::unwatch_name(watch);
}

} // namespace kelo::tray
