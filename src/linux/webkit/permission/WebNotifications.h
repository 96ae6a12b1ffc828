#pragma once

#include "base/Url.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/webkit/permission/UserConsent.h"

#include <webkit/webkit.h>

#include <deque>
#include <functional>
#include <memory>
#include <string>

namespace kelo::webkit {

/// Shows the notifications of a view's pages on the desktop, and tells the page of clicks. Where
/// pages may show none, one that is made all the same is closed at once.
///
/// No more than three are shown at a time: another one takes the place of the oldest. One with the
/// tag of another takes its place; the engine itself closes the former. Main thread only.
class WebNotifications {
public:
    static constexpr std::size_t most = 3;

    /// mayShow is asked for each. desktop: null to show none. The view must outlive this object.
    WebNotifications(WebKitWebView* view,
                     std::shared_ptr<notification::DesktopNotifications> desktop,
                     std::function<bool()> mayShow);
    ~WebNotifications();
    WebNotifications(const WebNotifications&) = delete;
    WebNotifications& operator=(const WebNotifications&) = delete;

    /// Withdraws all of them and tells the page.
    void closeAll();

private:
    struct Shown;

    void show(WebKitNotification* notification);
    void closeOldest();
    std::unique_ptr<Shown> take(const Shown& shown);
    void closedByPage(const Shown& shown);

    std::shared_ptr<notification::DesktopNotifications> desktop;
    std::function<bool()> mayShow;
    std::deque<std::unique_ptr<Shown>> all; ///< oldest first
    gobject::SignalConnection connection;
};

/// Tells each new web process whether the service may show notifications: a page asks before
/// anybody can answer it. Lives as long as the returned connection; the choice is kept.
gobject::SignalConnection announceNotificationChoice(WebKitWebContext* context, const Url& service,
                                                     const UserChoice& choice);

} // namespace kelo::webkit
