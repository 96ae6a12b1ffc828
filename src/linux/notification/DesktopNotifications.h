#pragma once

#include <functional>
#include <string>

namespace kelo::notification {

struct Notification {
    std::string title;
    /// Shown as it is, whatever looks like markup in it.
    std::string body;
};

/// Notifications of the page, as the desktop shows them. Main thread only.
class DesktopNotifications {
public:
    virtual ~DesktopNotifications() = default;
    /// identifier: one that was never used before. The toolkit's own way to replace a notification
    /// corrupts memory. clicked: called at each click, after the main window has been opened or
    /// raised.
    virtual void show(const std::string& identifier, const Notification& notification,
                      std::function<void()> clicked) = 0;
    /// Does nothing if it is not shown.
    virtual void withdraw(const std::string& identifier) = 0;
};

} // namespace kelo::notification
