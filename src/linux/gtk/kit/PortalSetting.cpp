#include "linux/gtk/kit/PortalSetting.h"

#include <giomm/dbuswatchname.h>

#include <utility>

namespace kelo::gtk {

namespace {

constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* portalInterface = "org.freedesktop.portal.Settings";
constexpr const char* appearance = "org.freedesktop.appearance";

/// The innermost value, because implementations of the portal wrap it in one or more variants.
Glib::VariantBase unwrapped(Glib::VariantBase value) {
    while (value.gobj() && value.is_of_type(Glib::VARIANT_TYPE_VARIANT))
        value = Glib::VariantBase(g_variant_get_variant(value.gobj()));
    return value;
}

} // namespace

PortalSetting::PortalSetting(Glib::RefPtr<Gio::DBus::Connection> connection, std::string key,
                             Handler handler)
    : connection(std::move(connection)), key(std::move(key)), handler(std::move(handler)) {
    if (!this->connection)
        return;
    subscription = this->connection->signal_subscribe(
        [this](const Glib::RefPtr<Gio::DBus::Connection>&, const Glib::ustring&,
               const Glib::ustring&, const Glib::ustring&, const Glib::ustring&,
               const Glib::VariantContainerBase& arguments) { changed(arguments); },
        portalName, portalInterface, "SettingChanged", portalPath, appearance);
    watch = Gio::DBus::watch_name(
        this->connection, portalName,
        [this, weak = std::weak_ptr(alive)](const Glib::RefPtr<Gio::DBus::Connection>&,
                                            const Glib::ustring&, const Glib::ustring&) {
            if (!weak.expired())
                ask();
        });
}

PortalSetting::~PortalSetting() {
    if (!connection)
        return;
    Gio::DBus::unwatch_name(watch);
    connection->signal_unsubscribe(subscription);
}

void PortalSetting::ask() {
    connection->call(
        portalPath, portalInterface, "Read",
        Glib::VariantContainerBase::create_tuple({Glib::Variant<Glib::ustring>::create(appearance),
                                                  Glib::Variant<Glib::ustring>::create(key)}),
        [this, weak = std::weak_ptr(alive)](const Glib::RefPtr<Gio::AsyncResult>& result) {
            if (weak.expired())
                return;
            try {
                const auto reply = connection->call_finish(result);
                if (reply.get_n_children() != 1)
                    return;
                Glib::VariantBase value;
                reply.get_child(value, 0);
                tell(value);
            } catch (const Glib::Error& error) {
                g_debug("The desktop's portal reports no %s: %s", key.c_str(), error.what());
            }
        },
        portalName, -1, Gio::DBus::CallFlags::NO_AUTO_START);
}

void PortalSetting::changed(const Glib::VariantContainerBase& arguments) {
    if (arguments.get_n_children() != 3)
        return;
    Glib::VariantBase name;
    arguments.get_child(name, 1);
    if (!name.is_of_type(Glib::VARIANT_TYPE_STRING) ||
        Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::ustring>>(name).get().raw() != key)
        return;
    Glib::VariantBase value;
    arguments.get_child(value, 2);
    tell(value);
}

void PortalSetting::tell(const Glib::VariantBase& value) {
    const auto inner = unwrapped(value);
    if (inner.gobj())
        handler(inner);
}

} // namespace kelo::gtk
