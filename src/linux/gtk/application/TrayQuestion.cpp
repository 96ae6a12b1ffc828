#include "linux/gtk/application/TrayQuestion.h"

#include <glibmm/error.h>
#include <glibmm/variant.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace kelo::gtk {

namespace {

using Connection = Glib::RefPtr<Gio::DBus::Connection>;
using Parameters = Glib::VariantContainerBase;
/// Receives null if the call failed.
using Replied = std::function<void(GVariant* values)>;

constexpr const char* watcher = "org.kde.StatusNotifierWatcher";
constexpr const char* busItself = "org.freedesktop.DBus";

struct Object {
    const char* owner;
    const char* path;
    const char* interface;
};

void call(const Connection& bus, const Object& object, const char* method,
          const Parameters& parameters, Replied replied) {
    const auto finished =
        [bus, replied = std::move(replied)](const Glib::RefPtr<Gio::AsyncResult>& result) {
            Parameters values;
            try {
                values = bus->call_finish(result);
            } catch (const Glib::Error&) {
                return replied(nullptr);
            }
            replied(values.gobj());
        };
    bus->call(object.path, object.interface, method, parameters, finished, object.owner, -1,
              Gio::DBus::CallFlags::NO_AUTO_START);
}

void askForNames(const Connection& bus, std::function<void(std::vector<std::string>)> answered) {
    const auto replied = [answered = std::move(answered)](GVariant* values) {
        std::vector<std::string> names;
        if (values && g_variant_is_of_type(values, G_VARIANT_TYPE("(as)"))) {
            GVariant* const list = g_variant_get_child_value(values, 0);
            const char** const each = g_variant_get_strv(list, nullptr);
            for (const char* const* next = each; *next; ++next)
                names.emplace_back(*next);
            g_free(each);
            g_variant_unref(list);
        }
        answered(std::move(names));
    };
    call(bus, {busItself, "/org/freedesktop/DBus", busItself}, "ListNames", {}, replied);
}

/// Answers with the unique name of the program that owns this one; empty if there is none.
void askForOwner(const Connection& bus, const std::string& name,
                 std::function<void(std::string)> answered) {
    const auto replied = [answered = std::move(answered)](GVariant* values) {
        const char* owner = "";
        if (values && g_variant_is_of_type(values, G_VARIANT_TYPE("(s)")))
            g_variant_get(values, "(&s)", &owner);
        answered(owner);
    };
    call(bus, {busItself, "/org/freedesktop/DBus", busItself}, "GetNameOwner",
         Glib::Variant<std::tuple<Glib::ustring>>::create({name}), replied);
}

bool isHost(std::string_view name) {
    return name.starts_with("org.kde.StatusNotifierHost-");
}

bool isDaemonOfPlasma(std::string_view name) {
    return name == "org.kde.kded5" || name == "org.kde.kded6";
}

} // namespace

// Plasma's list of items, which is kept by a daemon, says that there is a tray also where the user
// has taken it out of the panel. Its trays have names on the bus. Those of other desktops need
// none.
void askForTray(const Connection& bus, std::function<void(bool hasTray)> answered) {
    const auto replied = [bus, answered = std::move(answered)](GVariant* values) {
        gboolean isSaid = FALSE;
        if (values && g_variant_is_of_type(values, G_VARIANT_TYPE("(v)"))) {
            GVariant* said = nullptr;
            g_variant_get(values, "(v)", &said);
            isSaid =
                g_variant_is_of_type(said, G_VARIANT_TYPE_BOOLEAN) && g_variant_get_boolean(said);
            g_variant_unref(said);
        }
        if (!isSaid)
            return answered(false);
        askForNames(bus, [bus, answered](const std::vector<std::string>& names) {
            const auto daemon = std::ranges::find_if(names, isDaemonOfPlasma);
            if (daemon == names.end() || std::ranges::any_of(names, isHost))
                return answered(true);
            askForOwner(
                bus, watcher, [bus, answered, daemon = *daemon](const std::string& watching) {
                    askForOwner(bus, daemon, [answered, watching](const std::string& owner) {
                        answered(watching != owner);
                    });
                });
        });
    };
    call(bus, {watcher, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties"}, "Get",
         Glib::Variant<std::tuple<Glib::ustring, Glib::ustring>>::create(
             {watcher, "IsStatusNotifierHostRegistered"}),
         replied);
}

} // namespace kelo::gtk
