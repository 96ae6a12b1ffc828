#include "linux/gtk/application/TrayQuestion.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace kelo::gtk {

namespace {

constexpr const char* watcher = "org.kde.StatusNotifierWatcher";

bus::Object busItself() {
    return {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};
}

bool saysYes(GVariant* values) {
    if (!values || !g_variant_is_of_type(values, G_VARIANT_TYPE("(v)")))
        return false;
    GVariant* inner = nullptr;
    g_variant_get(values, "(v)", &inner);
    const gobject::GVariantPointer value(inner);
    return g_variant_is_of_type(inner, G_VARIANT_TYPE_BOOLEAN) && g_variant_get_boolean(inner);
}

std::vector<std::string> namesIn(GVariant* values) {
    std::vector<std::string> names;
    if (!values || !g_variant_is_of_type(values, G_VARIANT_TYPE("(as)")))
        return names;
    GVariantIter* each = nullptr;
    g_variant_get(values, "(as)", &each);
    const gobject::GVariantIterPointer iterator(each);
    const char* name = nullptr;
    while (g_variant_iter_next(each, "&s", &name))
        names.emplace_back(name);
    return names;
}

bool isHost(std::string_view name) {
    return name.starts_with("org.kde.StatusNotifierHost-");
}

bool isDaemonOfPlasma(std::string_view name) {
    return name == "org.kde.kded5" || name == "org.kde.kded6";
}

} // namespace

TrayQuestion::TrayQuestion(bus::Connection bus, Answered answered)
    : connection(std::move(bus)), answered(std::move(answered)) {
    call({watcher, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties"}, "Get",
         g_variant_new("(ss)", watcher, "IsStatusNotifierHostRegistered"),
         [this](GVariant* values) {
             if (saysYes(values))
                 lookForHost();
             else
                 answer(false);
         });
}

void TrayQuestion::call(const bus::Object& object, const char* method, GVariant* parameters,
                        Replied replied) {
    calls.call(
        connection, object, method, parameters,
        [replied = std::move(replied)](const gobject::GVariantPointer& values,
                                       const gobject::GErrorPointer&) { replied(values.get()); });
}

// Plasma's list of items, which is kept by a daemon, says that there is a tray also where the user
// has taken it out of the panel. Its trays have names on the bus. Those of other desktops need
// none.
void TrayQuestion::lookForHost() {
    call(busItself(), "ListNames", nullptr, [this](GVariant* values) {
        const auto names = namesIn(values);
        const auto daemon = std::ranges::find_if(names, isDaemonOfPlasma);
        if (daemon == names.end() || std::ranges::any_of(names, isHost))
            answer(true);
        else
            compareWith(*daemon);
    });
}

void TrayQuestion::compareWith(const std::string& daemon) {
    findOwner(watcher, [this, daemon](const std::string& watching) {
        findOwner(daemon,
                  [this, watching](const std::string& owner) { answer(watching != owner); });
    });
}

/// Finds the unique name of the program that owns this one; empty if there is none.
void TrayQuestion::findOwner(const std::string& name, OwnerFound found) {
    call(busItself(), "GetNameOwner", g_variant_new("(s)", name.c_str()),
         [found = std::move(found)](GVariant* values) {
             const char* owner = "";
             if (values && g_variant_is_of_type(values, G_VARIANT_TYPE("(s)")))
                 g_variant_get(values, "(&s)", &owner);
             found(owner);
         });
}

void TrayQuestion::answer(bool hasTray) {
    const auto told = answered;
    told(hasTray);
}

} // namespace kelo::gtk
