#include "linux/webkit/permission/WebNotifications.h"

#include "base/ShownText.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/webkit/content/EngineHandles.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelo::webkit {

namespace {

constexpr std::size_t longestBody = 300;

std::string textOf(const char* text) {
    return text ? text : "";
}

std::string nextIdentifier() {
    static unsigned long long all = 0;
    return "page-" + std::to_string(++all);
}

} // namespace

struct WebNotifications::Shown {
    std::string identifier;
    gobject::GObjectPointer<WebKitNotification> notification;
    WebNotifications* owner;
    gobject::SignalConnection closed;
};

WebNotifications::WebNotifications(WebKitWebView* view,
                                   std::shared_ptr<notification::DesktopNotifications> desktop,
                                   std::function<bool()> mayShow)
    : desktop(std::move(desktop)),
      mayShow(std::move(mayShow)),
      connection(gobject::connectSignal(
          view, "show-notification",
          +[](WebKitWebView*, WebKitNotification* notification,
              WebNotifications* self) -> gboolean {
              self->show(notification);
              return TRUE;
          },
          this)) {}

WebNotifications::~WebNotifications() {
    closeAll();
}

void WebNotifications::closeAll() {
    for (const auto& shown : std::exchange(all, {})) {
        shown->closed = {};
        desktop->withdraw(shown->identifier);
        webkit_notification_close(shown->notification.get());
    }
}

void WebNotifications::show(WebKitNotification* notification) {
    if (!desktop || !mayShow()) {
        webkit_notification_close(notification);
        return;
    }
    if (all.size() == most)
        closeOldest();
    auto shown = std::make_unique<Shown>();
    shown->identifier = nextIdentifier();
    shown->notification = gobject::GObjectPointer<WebKitNotification>::share(notification);
    shown->owner = this;
    shown->closed = gobject::connectSignal(
        notification, "closed",
        +[](WebKitNotification*, Shown* self) { self->owner->closedByPage(*self); }, shown.get());
    desktop->show(shown->identifier,
                  {shownName(textOf(webkit_notification_get_title(notification))),
                   shownLine(textOf(webkit_notification_get_body(notification)), longestBody)},
                  [kept = shown->notification] { webkit_notification_clicked(kept.get()); });
    all.push_back(std::move(shown));
}

void WebNotifications::closeOldest() {
    const auto former = take(*all.front());
    former->closed = {};
    desktop->withdraw(former->identifier);
    webkit_notification_close(former->notification.get());
}

std::unique_ptr<WebNotifications::Shown> WebNotifications::take(const Shown& shown) {
    const auto place =
        std::ranges::find_if(all, [&](const auto& each) { return each.get() == &shown; });
    auto taken = std::move(*place);
    all.erase(place);
    return taken;
}

void WebNotifications::closedByPage(const Shown& shown) {
    const auto gone = take(shown);
    desktop->withdraw(gone->identifier);
}

namespace {

struct Announcement {
    Url service;
    UserChoice choice;
};

void announce(WebKitWebContext* context, std::shared_ptr<Announcement>* given) {
    const auto& [service, choice] = **given;
    const auto answer = choice ? choice.remembered->answer(permission::Capability::notifications)
                               : permission::Answer::denied;
    if (answer == permission::Answer::ask)
        return;
    const SecurityOriginPointer origin(
        webkit_security_origin_new_for_uri(service.absoluteString().c_str()));
    const gobject::GListPointer list(g_list_prepend(nullptr, origin.get()));
    const bool isAllowed = answer == permission::Answer::allowed;
    webkit_web_context_initialize_notification_permissions(
        context, isAllowed ? list.get() : nullptr, isAllowed ? nullptr : list.get());
}

} // namespace

gobject::SignalConnection announceNotificationChoice(WebKitWebContext* context, const Url& service,
                                                     const UserChoice& choice) {
    return {context, gobject::connectWithState(
                         context, "initialize-notification-permissions", &announce,
                         std::make_shared<Announcement>(Announcement{service, choice}))};
}

} // namespace kelo::webkit
