#pragma once

#include <giomm/dbusconnection.h>

#include <functional>
#include <memory>
#include <string>

namespace kelo::gtk {

/// One setting of the desktop's appearance, as its portal tells it: asked when the portal appears,
/// which it is not started for, and followed from then on. Main thread only.
class PortalSetting {
public:
    /// Receives the value without the variants around it.
    using Handler = std::function<void(const Glib::VariantBase& value)>;

    /// key: in org.freedesktop.appearance. A null connection means that there is no portal.
    PortalSetting(Glib::RefPtr<Gio::DBus::Connection> connection, std::string key, Handler handler);
    ~PortalSetting();
    PortalSetting(const PortalSetting&) = delete;
    PortalSetting& operator=(const PortalSetting&) = delete;

private:
    void ask();
    void changed(const Glib::VariantContainerBase& arguments);
    void tell(const Glib::VariantBase& value);

    Glib::RefPtr<Gio::DBus::Connection> connection;
    std::string key;
    Handler handler;
    guint subscription = 0;
    guint watch = 0;
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
};

} // namespace kelo::gtk
