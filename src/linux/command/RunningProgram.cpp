#include "linux/command/RunningProgram.h"

#include "deployment/Deployment.h"
#include "linux/bus/Connection.h"
#include "linux/gobject/GLibHandles.h"

#include <gio/gio.h>

#include <algorithm>

namespace kelo::command {

namespace {

std::string objectPath() {
    std::string path = "/" + std::string(deployment::applicationIdentifier);
    std::replace(path.begin(), path.end(), '.', '/');
    return path;
}

// With this data the running process may bring a window to the front, if the action opens one.
GVariant* startUpData() {
    GVariantBuilder data;
    g_variant_builder_init(&data, G_VARIANT_TYPE_VARDICT);
    const auto add = [&data](const char* variable, const char* name) {
        if (const char* const value = g_getenv(variable); value && *value)
            g_variant_builder_add(&data, "{sv}", name, g_variant_new_string(value));
    };
    add("XDG_ACTIVATION_TOKEN", "activation-token");
    add("DESKTOP_STARTUP_ID", "desktop-startup-id");
    return g_variant_builder_end(&data);
}

/// Takes ownership of floating parameters.
bool call(const bus::Connection& connection, const char* method, GVariant* parameters) {
    constexpr int milliseconds = 5000;
    const gobject::GVariantPointer answer(g_dbus_connection_call_sync(
        connection.get(), std::string(deployment::applicationIdentifier).c_str(),
        objectPath().c_str(), "org.freedesktop.Application", method, parameters, nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, milliseconds, nullptr, nullptr));
    return answer != nullptr;
}

/// Takes ownership of a floating parameter; null for none.
bool activate(const bus::Connection& connection, const std::string& action, GVariant* parameter) {
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("av"));
    if (parameter)
        g_variant_builder_add(&list, "v", parameter);
    return call(connection, "ActivateAction",
                g_variant_new("(sav@a{sv})", action.c_str(), &list, startUpData()));
}

} // namespace

bool askRunningProgram(const CommandLine& asked) {
    const auto connection = bus::openConnection(bus::sessionAddress());
    if (!connection)
        return false;
    if (asked.actions.empty() && !asked.page)
        return call(connection, "Activate", g_variant_new("(@a{sv})", startUpData()));
    const bool allRan = std::ranges::all_of(
        asked.actions, [&](const auto& action) { return activate(connection, action, nullptr); });
    return allRan &&
           (!asked.page || activate(connection, showPageAction,
                                    g_variant_new_string(asked.page->absoluteString().c_str())));
}

} // namespace kelo::command
