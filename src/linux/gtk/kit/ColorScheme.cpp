#include "linux/gtk/kit/ColorScheme.h"

#include <gdkmm/display.h>
#include <giomm/dbuserror.h>
#include <gtkmm/stylecontext.h>

#include <functional>
#include <string>
#include <utility>

namespace kelo::gtk {

namespace {

constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* portalInterface = "org.freedesktop.portal.Settings";
constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* colorScheme = "color-scheme";

/// Values of the portal's color-scheme; 0 is "no preference".
constexpr guint32 preferDark = 1;
constexpr guint32 preferLight = 2;

// Both have a contrast of at least 4.5 to 1 against the translucent panel of their scheme, whatever
// page is below it.
constexpr const char* redOnLight = "@define-color kelo_red #a51321;";
constexpr const char* redOnDark = "@define-color kelo_red #ff938c;";

bool namesDarkTheme(std::string theme) {
    for (char& character : theme)
        character = g_ascii_tolower(character);
    return theme.find("dark") != std::string::npos;
}

/// The innermost value, because implementations of the portal wrap it in one or more variants.
Glib::VariantBase unwrapped(Glib::VariantBase value) {
    while (value.gobj() && value.is_of_type(Glib::VARIANT_TYPE_VARIANT))
        value = Glib::VariantBase(g_variant_get_variant(value.gobj()));
    return value;
}

} // namespace

/// The portal's signal for changed settings of the appearance; destroying it unsubscribes.
class ColorScheme::SettingsSubscription {
public:
    SettingsSubscription(Glib::RefPtr<Gio::DBus::Connection> bus,
                         std::function<void(const Glib::VariantContainerBase&)> handler)
        : bus(std::move(bus)),
          identifier(this->bus->signal_subscribe(
              [handler = std::move(handler)](
                  const Glib::RefPtr<Gio::DBus::Connection>&, const Glib::ustring&,
                  const Glib::ustring&, const Glib::ustring&, const Glib::ustring&,
                  const Glib::VariantContainerBase& changed) { handler(changed); },
              portalName, portalInterface, "SettingChanged", portalPath, appearance)) {}
    ~SettingsSubscription() { bus->signal_unsubscribe(identifier); }
    SettingsSubscription(const SettingsSubscription&) = delete;
    SettingsSubscription& operator=(const SettingsSubscription&) = delete;

private:
    Glib::RefPtr<Gio::DBus::Connection> bus;
    guint identifier;
};

ColorScheme::ColorScheme(Glib::RefPtr<Gio::DBus::Connection> connection)
    : connection(std::move(connection)),
      settings(Gtk::Settings::get_default()),
      errorRed(Gtk::CssProvider::create()) {
    Gtk::StyleContext::add_provider_for_display(Gdk::Display::get_default(), errorRed,
                                                GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    update();
    const auto updated = sigc::mem_fun(*this, &ColorScheme::update);
    settings->property_gtk_application_prefer_dark_theme().signal_changed().connect(updated);
    settings->property_gtk_theme_name().signal_changed().connect(updated);
    if (this->connection)
        askPortal();
}

ColorScheme::~ColorScheme() {
    Gtk::StyleContext::remove_provider_for_display(Gdk::Display::get_default(), errorRed);
}

void ColorScheme::askPortal() {
    subscription = std::make_unique<SettingsSubscription>(
        connection, [this](const Glib::VariantContainerBase& changed) {
            if (changed.get_n_children() != 3)
                return;
            Glib::VariantBase key;
            changed.get_child(key, 1);
            if (key.is_of_type(Glib::VARIANT_TYPE_STRING) &&
                Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::ustring>>(key).get() ==
                    colorScheme) {
                Glib::VariantBase value;
                changed.get_child(value, 2);
                applyPreference(value);
            }
        });

    connection->call(
        portalPath, portalInterface, "Read",
        Glib::VariantContainerBase::create_tuple(
            {Glib::Variant<Glib::ustring>::create(appearance),
             Glib::Variant<Glib::ustring>::create(colorScheme)}),
        [this, weak = std::weak_ptr(alive)](const Glib::RefPtr<Gio::AsyncResult>& result) {
            if (weak.expired())
                return;
            try {
                const auto reply = connection->call_finish(result);
                if (reply.get_n_children() != 1)
                    return;
                Glib::VariantBase value;
                reply.get_child(value, 0);
                applyPreference(value);
            } catch (const Glib::Error& error) {
                g_debug("The desktop's portal reports no color scheme: %s", error.what());
            }
        },
        portalName, -1, Gio::DBus::CallFlags::NO_AUTO_START);
}

void ColorScheme::applyPreference(const Glib::VariantBase& preference) {
    const auto value = unwrapped(preference);
    if (!value.gobj() || !value.is_of_type(Glib::VARIANT_TYPE_UINT32))
        return;
    const auto scheme = Glib::VariantBase::cast_dynamic<Glib::Variant<guint32>>(value).get();
    if (scheme == preferDark || scheme == preferLight)
        settings->property_gtk_application_prefer_dark_theme() = scheme == preferDark;
    else
        settings->reset_property("gtk-application-prefer-dark-theme");
}

void ColorScheme::update() {
    const char* forced = g_getenv("GTK_THEME"); // overrides the settings, as "Name:dark"
    const bool dark = forced ? namesDarkTheme(forced)
                             : settings->property_gtk_application_prefer_dark_theme().get_value() ||
                                   namesDarkTheme(settings->property_gtk_theme_name().get_value());
    if (knownDark == dark)
        return;
    knownDark = dark;
    errorRed->load_from_data(dark ? redOnDark : redOnLight);
    changed.emit();
}

} // namespace kelo::gtk
