#include "testing/rig/PrivateDesktop.h"

#include <cstdlib>
#include <stdexcept>

namespace kelo::rig {

namespace {

std::string loginPasswordOfDesktop() {
    const char* password = std::getenv("KELO_PRIVATE_DESKTOP_PASSWORD");
    if (!password)
        throw std::runtime_error("Start this program through scripts/private-desktop: it types and "
                                 "clicks, and must not do so on a desktop that somebody uses.");
    return password;
}

bool hasKeyring() {
    GError* error = nullptr;
    GDBusConnection* session = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    const gobject::GErrorPointer ownedError(error);
    const auto owned = gobject::GObjectPointer<GDBusConnection>::adopt(session);
    if (!session)
        return false;
    const VariantPointer reply(g_dbus_connection_call_sync(
        session, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "NameHasOwner", g_variant_new("(s)", "org.freedesktop.secrets"), G_VARIANT_TYPE("(b)"),
        G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, nullptr));
    gboolean owns = FALSE;
    if (reply)
        g_variant_get(reply.get(), "(b)", &owns);
    return owns;
}

} // namespace

PrivateDesktop::PrivateDesktop() : loginPassword(loginPasswordOfDesktop()), tree(bus) {
    tree.awaitThat("the window manager has started", [&] { return screen.windows.hasManager(); });
    tree.awaitThat("the keyring has started", hasKeyring);
}

} // namespace kelo::rig
