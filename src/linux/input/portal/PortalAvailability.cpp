#include "linux/input/portal/PortalAvailability.h"

#include "base/Translation.h"
#include "linux/bus/Connection.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/input/portal/PortalRequest.h"

#include <string_view>
#include <utility>

namespace kelo::input {

namespace {

struct Answer {
    gobject::GVariantPointer value;
    bool late = false;
};

/// Questions to programs on a bus.
struct Asker {
    bus::Connection bus;
    std::chrono::milliseconds patience;

    Answer ask(const bus::Object& object, const char* method, GVariant* parameters) const {
        GError* error = nullptr;
        gobject::GVariantPointer value(g_dbus_connection_call_sync(
            bus.get(), object.owner.c_str(), object.path.c_str(), object.interface.c_str(), method,
            parameters, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
            static_cast<int>(patience.count()), nullptr, &error));
        const gobject::GErrorPointer failure(error);
        return {std::move(value),
                failure && g_error_matches(failure.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT)};
    }

    Answer askBus(const char* method, GVariant* parameters) const {
        return ask({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"},
                   method, parameters);
    }
};

bool canBeStarted(const Asker& asker) {
    const Answer names = asker.askBus("ListActivatableNames", nullptr);
    if (!names.value || !g_variant_is_of_type(names.value.get(), G_VARIANT_TYPE("(as)")))
        return false;
    GVariantIter* each = nullptr;
    g_variant_get(names.value.get(), "(as)", &each);
    const gobject::GVariantIterPointer owned(each);
    const char* name = nullptr;
    while (g_variant_iter_next(each, "&s", &name))
        if (std::string_view(name) == portal::busName)
            return true;
    return false;
}

} // namespace

Availability portalAvailability(const std::string& busAddress, std::chrono::milliseconds patience) {
    if (busAddress.empty())
        return {false, translated("There is no session bus to reach the desktop's portal by."),
                translated("Start Kelo from within your desktop.")};
    const Asker asker{bus::openConnection(busAddress), patience};
    if (!asker.bus)
        return {false,
                translated(
                    "The session bus, by which the desktop's portal is reached, does not answer."),
                translated("Start Kelo from within your desktop, or log in anew.")};

    const Answer owner = asker.askBus("GetNameOwner", g_variant_new("(s)", portal::busName));
    if (!owner.value || !g_variant_is_of_type(owner.value.get(), G_VARIANT_TYPE("(s)"))) {
        // Only a running portal can tell, and this query must not start it.
        if (canBeStarted(asker))
            return {true,
                    translated("The desktop's portal is started when Kelo needs it, and asked for "
                               "Ctrl+Alt+Space then, if it offers global shortcuts."),
                    translated("Ask again while Kelo is running to see whether it does.")};
        return {
            false, translated("This desktop has no portal."),
            translated(
                "Install xdg-desktop-portal and its part for your desktop, or: In your desktop's "
                "keyboard settings, give the command \"kelo --widget\" a shortcut.")};
    }
    const char* unique = nullptr;
    g_variant_get(owner.value.get(), "(&s)", &unique);
    const Answer version =
        asker.ask({unique, portal::path, "org.freedesktop.DBus.Properties"}, "Get",
                  g_variant_new("(ss)", portal::globalShortcuts, "version"));
    if (version.late)
        return {false, translated("The desktop's portal does not answer."),
                translated(
                    "Log in anew, or: In your desktop's keyboard settings, give the command \"kelo "
                    "--widget\" a shortcut.")};
    if (!version.value)
        return {false, translated("The desktop's portal does not offer global shortcuts."),
                translated("In your desktop's keyboard settings, give the command \"kelo "
                           "--widget\" a shortcut.")};
    return {
        true,
        translated(
            "The desktop's portal watches for Ctrl+Alt+Space, or for the keys that you choose when "
            "it asks. It does not tell of other keys, and no other shortcut counts."),
        ""};
}

} // namespace kelo::input
