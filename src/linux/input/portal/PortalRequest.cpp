#include "linux/input/portal/PortalRequest.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace kelo::input {

namespace {

/// Many desktops' portals have no global shortcuts, which is nothing to be warned of.
bool isUnknownThere(const GError* failure) {
    return g_error_matches(failure, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD) ||
           g_error_matches(failure, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_INTERFACE) ||
           g_error_matches(failure, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_OBJECT);
}

} // namespace

std::vector<std::string> shortcutsIn(GVariant* results) {
    std::vector<std::string> names;
    const gobject::GVariantPointer bound(
        g_variant_lookup_value(results, "shortcuts", G_VARIANT_TYPE("a(sa{sv})")));
    for (gsize at = 0; bound && at < g_variant_n_children(bound.get()); ++at) {
        const char* name = nullptr;
        g_variant_get_child(bound.get(), at, "(&s@a{sv})", &name, nullptr);
        names.emplace_back(name);
    }
    return names;
}

std::string portalToken() {
    static std::uint64_t next = 0;
    return "kelo" + std::to_string(next++);
}

std::string portalPath(const bus::Connection& connection, const char* kind,
                       const std::string& token) {
    std::string sender = g_dbus_connection_get_unique_name(connection.get());
    sender.erase(0, 1);
    std::ranges::replace(sender, '.', '_');
    return std::string(portal::path) + "/" + kind + "/" + sender + "/" + token;
}

PortalRequest::PortalRequest(bus::Connection bus, const std::string& owner, const char* method,
                             const Parameters& parameters, Finished finished)
    : connection(std::move(bus)),
      object{owner, "", portal::request},
      finished(std::move(finished)),
      // Subscribed before the call, so that no response is missed.
      response(connection, object, "Response", [this](const std::string& from, GVariant* values) {
          if (from == object.path)
              responded(values);
      }) {
    const std::string token = portalToken();
    object.path = portalPath(connection, "request", token);
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(token.c_str()));
    // Waiting holds nobody up. A portal that was given up would take the shortcut later, and nobody
    // would listen.
    calls.call(
        connection, {owner, portal::path, portal::globalShortcuts}, method, parameters(&options),
        [this, method](const gobject::GVariantPointer& answer,
                       const gobject::GErrorPointer& failure) {
            accepted(method, answer.get(), failure.get());
        },
        bus::Patience::endless);
}

PortalRequest::~PortalRequest() {
    // Otherwise, the portal's question to the user would stay open.
    if (isPending)
        bus::tell(connection, object, "Close");
}

void PortalRequest::accepted(const char* method, GVariant* answer, const GError* failure) {
    if (answer && g_variant_is_of_type(answer, G_VARIANT_TYPE("(o)"))) {
        // A portal may choose another path than the expected one.
        const char* handle = nullptr;
        g_variant_get(answer, "(&o)", &handle);
        object.path = handle;
        return;
    }
    if (isUnknownThere(failure))
        g_debug("hotkey: the portal does not offer global shortcuts");
    else
        g_warning("The portal did not take %s: %s", method,
                  failure ? failure->message : "it gave no request");
    finish(nullptr);
}

void PortalRequest::responded(GVariant* values) {
    if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(ua{sv})")))
        return finish(nullptr);
    constexpr guint32 granted = 0;
    guint32 answer = granted;
    g_variant_get_child(values, 0, "u", &answer);
    const gobject::GVariantPointer results(g_variant_get_child_value(values, 1));
    // After it has bound shortcuts, the portal of GNOME 48 answers with any number. A refusal never
    // names a shortcut.
    const bool isTaken = answer == granted || !shortcutsIn(results.get()).empty();
    finish(isTaken ? results.get() : nullptr);
}

void PortalRequest::finish(GVariant* results) {
    if (!std::exchange(isPending, false))
        return;
    const Finished told = finished;
    told(results);
}

} // namespace kelo::input
