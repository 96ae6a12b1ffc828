#pragma once

#include "linux/notification/DesktopNotifications.h"

#include <giomm/application.h>

#include <functional>
#include <map>
#include <string>

namespace kelo::gtk {

/// The notifications of the page as notifications of the application, with its icon. Without a
/// running application it shows none. Main thread only.
class PageNotices final : public notification::DesktopNotifications {
public:
    /// From now on, notifications are the application's, which withdraws them when it ends.
    /// openWindow: what a click does first.
    void attach(const Glib::RefPtr<Gio::Application>& application,
                std::function<void()> openWindow);
    /// The application has ended.
    void detach();

    void show(const std::string& identifier, const notification::Notification& notification,
              std::function<void()> clicked) override;
    void withdraw(const std::string& identifier) override;

private:
    void withdrawAll();
    void click(const std::string& identifier);

    Glib::RefPtr<Gio::Application> application;
    std::function<void()> openWindow;
    std::map<std::string, std::function<void()>> clickedOf;
};

} // namespace kelo::gtk
