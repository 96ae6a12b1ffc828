#pragma once

#include "linux/gtk/kit/AccentColor.h"
#include "linux/gtk/kit/PortalSetting.h"

#include <gtkmm/cssprovider.h>
#include <gtkmm/settings.h>
#include <sigc++/signal.h>
#include <sigc++/trackable.h>

#include <optional>

namespace kelo::gtk {

/// Keeps the toolkit's color scheme (light or dark) and its accent color the same as the desktop's,
/// which its portal tells. Without an answer, the toolkit's own settings apply. Main thread only.
class ColorScheme : public sigc::trackable {
public:
    /// A null connection means that there is no portal.
    explicit ColorScheme(const Glib::RefPtr<Gio::DBus::Connection>& connection);
    ~ColorScheme();
    ColorScheme(const ColorScheme&) = delete;
    ColorScheme& operator=(const ColorScheme&) = delete;

    bool isDark() const { return knownDark == true; }
    /// Emitted after isDark() changed.
    sigc::signal<void()>& signalChanged() { return changed; }

private:
    void applyPreference(const Glib::VariantBase& value);
    void update();

    Glib::RefPtr<Gtk::Settings> settings;
    Glib::RefPtr<Gtk::CssProvider> errorRed;
    std::optional<bool> knownDark;
    sigc::signal<void()> changed;
    AccentColor accent;
    std::optional<PortalSetting> preference;
};

} // namespace kelo::gtk
