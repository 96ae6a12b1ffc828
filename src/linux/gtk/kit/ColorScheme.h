#pragma once

#include <giomm/dbusconnection.h>
#include <gtkmm/cssprovider.h>
#include <gtkmm/settings.h>
#include <sigc++/signal.h>
#include <sigc++/trackable.h>

#include <memory>
#include <optional>

namespace kelo::gtk {

/// Keeps the toolkit's color scheme (light or dark) the same as the desktop's. The desktop's portal
/// is asked asynchronously, and only if it is already running. Without an answer, the toolkit's own
/// settings apply. Main thread only.
class ColorScheme : public sigc::trackable {
public:
    /// A null connection means that there is no portal.
    explicit ColorScheme(Glib::RefPtr<Gio::DBus::Connection> connection);
    ~ColorScheme();
    ColorScheme(const ColorScheme&) = delete;
    ColorScheme& operator=(const ColorScheme&) = delete;

    bool isDark() const { return knownDark == true; }
    /// Emitted after isDark() changed.
    sigc::signal<void()>& signalChanged() { return changed; }

private:
    void askPortal();
    void applyPreference(const Glib::VariantBase& preference);
    void update();

    class SettingsSubscription;

    Glib::RefPtr<Gio::DBus::Connection> connection;
    Glib::RefPtr<Gtk::Settings> settings;
    Glib::RefPtr<Gtk::CssProvider> errorRed;
    std::optional<bool> knownDark;
    sigc::signal<void()> changed;
    std::unique_ptr<SettingsSubscription> subscription;
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
};

} // namespace kelo::gtk
