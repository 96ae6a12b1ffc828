#include "linux/input/portal/ShortcutSession.h"

#include "base/Translation.h"
#include "deployment/Deployment.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace kelo::input {

namespace {

constexpr const char* shortcut = "widget";

/// Plasma 5.27 keeps the user's keys under this name, and shows it where they are set. It must be
/// the same at each start.
constexpr const char* token = "Kelo";

/// The portal does not accept modifiers alone. The user may choose other keys.
constexpr const char* trigger = "CTRL+ALT+space";

GVariant* shortcuts() {
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&properties, "{sv}", "description",
                          g_variant_new_string(translated("Voice widget").c_str()));
    g_variant_builder_add(&properties, "{sv}", "preferred_trigger", g_variant_new_string(trigger));
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("a(sa{sv})"));
    g_variant_builder_add(&list, "(sa{sv})", shortcut, &properties);
    return g_variant_builder_end(&list);
}

bool namesTheShortcut(GVariant* results) {
    const auto names = shortcutsIn(results);
    return std::ranges::find(names, shortcut) != names.end();
}

} // namespace

ShortcutSession::ShortcutSession(bus::Connection bus, std::string owner, Handlers handlers)
    : connection(std::move(bus)),
      portalOwner(std::move(owner)),
      handlers(std::move(handlers)),
      activated(connection, {portalOwner, "", portal::globalShortcuts}, "Activated",
                [this](const std::string&, GVariant* values) { triggered(values, true); }),
      deactivated(connection, {portalOwner, "", portal::globalShortcuts}, "Deactivated",
                  [this](const std::string&, GVariant* values) { triggered(values, false); }),
      closed(connection, {portalOwner, "", portal::session}, "Closed",
             [this](const std::string& from, GVariant*) {
                 if (from == session) {
                     session.clear();
                     const auto told = this->handlers.closed;
                     told();
                 }
             }) {
    introduce();
}

ShortcutSession::~ShortcutSession() {
    close();
}

void ShortcutSession::introduce() {
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    const std::string identifier(deployment::applicationIdentifier);
    // This must be the connection's first call to the portal. Older portals do not support it and
    // identify the caller themselves, so an error changes nothing.
    calls.call(
        connection, {portalOwner, portal::path, portal::registry}, "Register",
        g_variant_new("(sa{sv})", identifier.c_str(), &options),
        [this](const gobject::GVariantPointer&, const gobject::GErrorPointer&) { create(); },
        bus::Patience::endless);
}

void ShortcutSession::create() {
    const auto parameters = [](GVariantBuilder* options) {
        g_variant_builder_add(options, "{sv}", "session_handle_token", g_variant_new_string(token));
        // Plasma 5.27 binds what is named here and leaves out what is named later. Other portals
        // ignore it.
        g_variant_builder_add(options, "{sv}", "shortcuts", shortcuts());
        return g_variant_new("(a{sv})", options);
    };
    request.emplace(connection, portalOwner, "CreateSession", parameters,
                    [this](GVariant* results) { created(results); });
}

void ShortcutSession::created(GVariant* results) {
    if (!results)
        return request.reset();
    const gobject::GVariantPointer handle(
        g_variant_lookup_value(results, "session_handle", nullptr));
    const bool named = handle && (g_variant_is_of_type(handle.get(), G_VARIANT_TYPE_STRING) ||
                                  g_variant_is_of_type(handle.get(), G_VARIANT_TYPE_OBJECT_PATH));
    session = named ? g_variant_get_string(handle.get(), nullptr)
                    : portalPath(connection, "session", token);
    if (g_variant_is_object_path(session.c_str())) {
        // Plasma 5.27 would open its settings at each start if it were asked once more.
        if (namesTheShortcut(results))
            return request.reset();
        return bind();
    }
    g_warning("The portal names its session \"%s\", which is no path.", session.c_str());
    session.clear();
}

void ShortcutSession::bind() {
    const auto parameters = [this](GVariantBuilder* options) {
        constexpr const char* noParentWindow = "";
        return g_variant_new("(o@a(sa{sv})sa{sv})", session.c_str(), shortcuts(), noParentWindow,
                             options);
    };
    request.emplace(connection, portalOwner, "BindShortcuts", parameters,
                    [this](const GVariant* results) {
                        if (!results) {
                            g_debug("The shortcut was refused.");
                            close();
                        }
                        request.reset();
                    });
}

void ShortcutSession::close() {
    if (!session.empty())
        bus::tell(connection, {portalOwner, session, portal::session}, "Close");
    session.clear();
}

void ShortcutSession::triggered(GVariant* values, bool down) {
    if (session.empty() || !g_variant_is_of_type(values, G_VARIANT_TYPE("(osta{sv})")))
        return;
    const char* from = nullptr;
    const char* which = nullptr;
    g_variant_get_child(values, 0, "&o", &from);
    g_variant_get_child(values, 1, "&s", &which);
    if (session == from && std::string_view(which) == shortcut) {
        const auto told = handlers.pressed;
        told(down);
    }
}

} // namespace kelo::input
