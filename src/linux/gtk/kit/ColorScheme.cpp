#include "linux/gtk/kit/ColorScheme.h"

#include <gdkmm/display.h>
#include <gtkmm/stylecontext.h>

#include <string>
#include <utility>

namespace kelo::gtk {

namespace {

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

} // namespace

ColorScheme::ColorScheme(const Glib::RefPtr<Gio::DBus::Connection>& connection)
    : settings(Gtk::Settings::get_default()),
      errorRed(Gtk::CssProvider::create()),
      accent(connection) {
    Gtk::StyleContext::add_provider_for_display(Gdk::Display::get_default(), errorRed,
                                                GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    update();
    const auto updated = sigc::mem_fun(*this, &ColorScheme::update);
    settings->property_gtk_application_prefer_dark_theme().signal_changed().connect(updated);
    settings->property_gtk_theme_name().signal_changed().connect(updated);
    preference.emplace(connection, colorScheme,
                       [this](const Glib::VariantBase& value) { applyPreference(value); });
}

ColorScheme::~ColorScheme() {
    Gtk::StyleContext::remove_provider_for_display(Gdk::Display::get_default(), errorRed);
}

void ColorScheme::applyPreference(const Glib::VariantBase& value) {
    if (!value.is_of_type(Glib::VARIANT_TYPE_UINT32))
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
