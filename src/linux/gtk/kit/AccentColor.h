#pragma once

#include "linux/gtk/kit/PortalSetting.h"

#include <gdkmm/rgba.h>
#include <gtkmm/cssprovider.h>
#include <sigc++/trackable.h>

#include <optional>

namespace kelo::gtk {

/// White, or black where white could hardly be read on this color.
Gdk::RGBA textColorOn(const Gdk::RGBA& background);

/// Gives buttons, fields and selections the color that the user has chosen in the desktop's
/// settings. The toolkit's own themes do not know it. Without such a choice, or if the theme is one
/// of high contrast, the theme's color stays. Main thread only.
class AccentColor : public sigc::trackable {
public:
    /// A null connection means that there is no portal.
    explicit AccentColor(const Glib::RefPtr<Gio::DBus::Connection>& connection);
    ~AccentColor();
    AccentColor(const AccentColor&) = delete;
    AccentColor& operator=(const AccentColor&) = delete;

private:
    void apply();

    std::optional<Gdk::RGBA> chosen;
    Glib::RefPtr<Gtk::CssProvider> style;
    PortalSetting setting;
};

} // namespace kelo::gtk
