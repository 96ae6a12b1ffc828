#include "linux/gtk/kit/AccentColor.h"

#include <gdkmm/display.h>
#include <gtkmm/settings.h>
#include <gtkmm/stylecontext.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace kelo::gtk {

namespace {

/// Portals tell "no choice" by parts that are out of range.
std::optional<Gdk::RGBA> colorOf(const Glib::VariantBase& value) {
    if (!g_variant_is_of_type(const_cast<GVariant*>(value.gobj()), G_VARIANT_TYPE("(ddd)")))
        return std::nullopt;
    std::array<double, 3> parts{};
    g_variant_get(const_cast<GVariant*>(value.gobj()), "(ddd)", &parts[0], &parts[1], &parts[2]);
    const auto isInRange = [](double part) { return part >= 0 && part <= 1; };
    if (!std::ranges::all_of(parts, isInRange))
        return std::nullopt;
    return Gdk::RGBA(static_cast<float>(parts[0]), static_cast<float>(parts[1]),
                     static_cast<float>(parts[2]));
}

/// Relative luminance (WCAG 2.1).
double luminance(const Gdk::RGBA& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.get_red()) + 0.7152 * linear(color.get_green()) +
           0.0722 * linear(color.get_blue());
}

/// What the toolkit's own themes draw in their blue.
constexpr const char* rules = R"(
@define-color theme_selected_bg_color @kelo_accent;
@define-color theme_selected_fg_color @kelo_on_accent;
button.suggested-action:not(:disabled), switch:checked:not(:disabled), check:checked:not(:disabled),
radio:checked:not(:disabled), selection, progressbar > trough > progress {
  color: @kelo_on_accent;
  background-color: @kelo_accent;
  background-image: none;
  border-color: shade(@kelo_accent, 0.8);
}
button.suggested-action:hover:not(:disabled):not(:active) {
  background-image: image(shade(@kelo_accent, 1.08));
}
button.suggested-action:active { background-image: image(shade(@kelo_accent, 0.88)); }
)";

bool isOfHighContrast(const Glib::ustring& theme) {
    return theme.find("HighContrast") != Glib::ustring::npos ||
           theme.find("-hc") != Glib::ustring::npos;
}

} // namespace

Gdk::RGBA textColorOn(const Gdk::RGBA& background) {
    constexpr double leastContrast = 3;
    const bool isReadable = 1.05 / (luminance(background) + 0.05) >= leastContrast;
    return Gdk::RGBA(isReadable ? "white" : "black");
}

AccentColor::AccentColor(const Glib::RefPtr<Gio::DBus::Connection>& connection)
    : style(Gtk::CssProvider::create()),
      setting(connection, "accent-color", [this](const Glib::VariantBase& value) {
          chosen = colorOf(value);
          apply();
      }) {
    Gtk::StyleContext::add_provider_for_display(Gdk::Display::get_default(), style,
                                                GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    Gtk::Settings::get_default()->property_gtk_theme_name().signal_changed().connect(
        sigc::mem_fun(*this, &AccentColor::apply));
}

AccentColor::~AccentColor() {
    Gtk::StyleContext::remove_provider_for_display(Gdk::Display::get_default(), style);
}

void AccentColor::apply() {
    const auto theme = Gtk::Settings::get_default()->property_gtk_theme_name().get_value();
    if (!chosen || isOfHighContrast(theme))
        return style->load_from_data("");
    style->load_from_data("@define-color kelo_accent " + chosen->to_string() +
                          ";\n@define-color kelo_on_accent " + textColorOn(*chosen).to_string() +
                          ";\n" + rules);
}

} // namespace kelo::gtk
