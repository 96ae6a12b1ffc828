#include "linux/gtk/kit/AccentColor.h"

#include <gdkmm/display.h>
#include <gtkmm/settings.h>
#include <gtkmm/stylecontext.h>

#include <array>
#include <cmath>
#include <optional>

namespace kelo::gtk {

namespace {

/// Portals tell "no choice" by parts that are out of range.
std::optional<Rgb> colorOf(const Glib::VariantBase& value) {
    if (!g_variant_is_of_type(const_cast<GVariant*>(value.gobj()), G_VARIANT_TYPE("(ddd)")))
        return std::nullopt;
    Rgb color;
    g_variant_get(const_cast<GVariant*>(value.gobj()), "(ddd)", &color.red, &color.green,
                  &color.blue);
    for (const double part : {color.red, color.green, color.blue})
        if (!(part >= 0 && part <= 1))
            return std::nullopt;
    return color;
}

double luminance(const Rgb& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

std::string hexadecimal(const Rgb& color) {
    const auto byte = [](double part) { return static_cast<unsigned>(std::lround(part * 255)); };
    std::array<char, 8> text{};
    g_snprintf(text.data(), text.size(), "#%02x%02x%02x", byte(color.red), byte(color.green),
               byte(color.blue));
    return text.data();
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

std::string textColorOn(const Rgb& background) {
    constexpr double leastContrast = 3;
    return 1.05 / (luminance(background) + 0.05) >= leastContrast ? "#ffffff" : "#000000";
}

AccentColor::AccentColor(const Glib::RefPtr<Gio::DBus::Connection>& connection)
    : style(Gtk::CssProvider::create()),
      setting(connection, "accent-color",
              [this](const Glib::VariantBase& value) { apply(value); }) {
    Gtk::StyleContext::add_provider_for_display(Gdk::Display::get_default(), style,
                                                GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

AccentColor::~AccentColor() {
    Gtk::StyleContext::remove_provider_for_display(Gdk::Display::get_default(), style);
}

void AccentColor::apply(const Glib::VariantBase& value) {
    const auto color = colorOf(value);
    const auto theme = Gtk::Settings::get_default()->property_gtk_theme_name().get_value();
    if (!color || isOfHighContrast(theme))
        return style->load_from_data("");
    style->load_from_data("@define-color kelo_accent " + hexadecimal(*color) +
                          ";\n@define-color kelo_on_accent " + textColorOn(*color) + ";\n" + rules);
}

} // namespace kelo::gtk
