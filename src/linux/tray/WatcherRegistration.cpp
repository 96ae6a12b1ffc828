#include "linux/tray/WatcherRegistration.h"

#include <giomm/dbuswatchname.h>
#include <glibmm/error.h>
#include <glibmm/variant.h>

#include <fstream>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

namespace kelo::tray {

namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr const char* gnomeName = "org.gnome.Shell";

using Name = Glib::Variant<std::tuple<Glib::ustring>>;

/// Empty if the process cannot be seen from here.
std::string programName(guint32 process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

} // namespace

WatcherRegistration::WatcherRegistration(Glib::RefPtr<Gio::DBus::Connection> connection,
                                         std::string itemPath, Prepare prepare)
    : bus(std::move(connection)),
      itemPath(std::move(itemPath)),
      prepare(std::move(prepare)),
      watch(Gio::DBus::watch_name(bus, watcherName,
                                  [this](const Glib::RefPtr<Gio::DBus::Connection>&,
                                         const Glib::ustring&,
                                         const Glib::ustring& owner) { askForShell(owner); })) {}

WatcherRegistration::~WatcherRegistration() {
    Gio::DBus::unwatch_name(watch);
}

void WatcherRegistration::askBus(
    const char* method, const Glib::ustring& name,
    std::function<void(const Glib::VariantContainerBase* answer)> answered) {
    const auto finished = [weak = std::weak_ptr(alive), bus = bus, answered = std::move(answered)](
                              const Glib::RefPtr<Gio::AsyncResult>& result) {
        std::optional<Glib::VariantContainerBase> answer;
        try {
            answer = bus->call_finish(result);
        } catch (const Glib::Error&) {
            // Nobody has the name, or has it any more.
        }
        if (!weak.expired())
            answered(answer ? &*answer : nullptr);
    };
    bus->call("/org/freedesktop/DBus", "org.freedesktop.DBus", method, Name::create({name}),
              finished, "org.freedesktop.DBus");
}

void WatcherRegistration::askForShell(const Glib::ustring& watcher) {
    askBus("GetNameOwner", gnomeName, [this, watcher](const Glib::VariantContainerBase* answer) {
        Glib::Variant<Glib::ustring> owner;
        if (answer)
            answer->get_child(owner, 0);
        if (answer && owner.get() == watcher)
            registerItem(watcher, Tray::gnome);
        else
            askForProcess(watcher);
    });
}

void WatcherRegistration::askForProcess(const Glib::ustring& watcher) {
    askBus("GetConnectionUnixProcessID", watcher,
           [this, watcher](const Glib::VariantContainerBase* answer) {
               Glib::Variant<guint32> process;
               if (answer)
                   answer->get_child(process, 0);
               const bool isLxqt = answer && programName(process.get()) == "lxqt-panel";
               registerItem(watcher, isLxqt ? Tray::lxqt : Tray::other);
           });
}

// The path is enough: the watcher then uses this connection's unique name. Some programs own a
// separate bus name for the item instead, but a sandbox would have to allow that name.
void WatcherRegistration::registerItem(const Glib::ustring& watcher, Tray tray) {
    prepare(tray);
    bus->call(
        watcherPath, watcherName, "RegisterStatusNotifierItem", Name::create({itemPath}),
        [bus = bus](const Glib::RefPtr<Gio::AsyncResult>& result) {
            try {
                bus->call_finish(result);
                g_debug("tray: the item is registered");
            } catch (const Glib::Error& error) {
                g_debug("tray: the item is not accepted: %s", error.what());
            }
        },
        watcher);
}

} // namespace kelo::tray
