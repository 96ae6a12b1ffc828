#pragma once

#include <giomm/dbusconnection.h>
#include <gtkmm/cssprovider.h>
#include <gtkmm/settings.h>
#include <sigc++/connection.h>
#include <sigc++/signal.h>

#include <memory>
#include <optional>
#include <vector>

namespace kelo::gtk {

/// Light or dark, as the desktop wants it. The desktop's portal is asked without waiting, and only
/// if it runs already; where it says nothing, the toolkit's own settings stand.
class ColorScheme {
public:
    /// The connection may be null: then there is no portal.
    explicit ColorScheme(Glib::RefPtr<Gio::DBus::Connection> connection);
    ~ColorScheme();
    ColorScheme(const ColorScheme&) = delete;
    ColorScheme& operator=(const ColorScheme&) = delete;

    bool isDark() const { return drawnDark == true; }
    /// After isDark() has another answer.
    sigc::signal<void()>& signalChanged() { return changed; }

private:
    void askPortal();
    void follow(const Glib::VariantBase& preference);
    void drawRed();

    Glib::RefPtr<Gio::DBus::Connection> connection;
    Glib::RefPtr<Gtk::Settings> settings;
    Glib::RefPtr<Gtk::CssProvider> red;
    std::optional<bool> drawnDark;
    sigc::signal<void()> changed;
    guint subscription = 0;
    std::vector<sigc::connection> watched;
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
};

} // namespace kelo::gtk
