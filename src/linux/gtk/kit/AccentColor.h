#pragma once

#include "linux/gtk/kit/PortalSetting.h"

#include <gtkmm/cssprovider.h>

#include <string>

namespace kelo::gtk {

/// A color; each part from 0 to 1.
struct Rgb {
    double red = 0;
    double green = 0;
    double blue = 0;
};

/// White, or black where white could hardly be read on this color.
std::string textColorOn(const Rgb& background);

/// Gives buttons, fields and selections the color that the user has chosen in the desktop's
/// settings. The toolkit's own themes do not know it. Without such a choice, or if the theme is one
/// of high contrast, the theme's color stays. Main thread only.
class AccentColor {
public:
    /// A null connection means that there is no portal.
    explicit AccentColor(const Glib::RefPtr<Gio::DBus::Connection>& connection);
    ~AccentColor();
    AccentColor(const AccentColor&) = delete;
    AccentColor& operator=(const AccentColor&) = delete;

private:
    void apply(const Glib::VariantBase& value);

    Glib::RefPtr<Gtk::CssProvider> style;
    PortalSetting setting;
};

} // namespace kelo::gtk
