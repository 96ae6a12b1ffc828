#include "linux/gtk/application/PageNotices.h"

#include "base/ShownText.h"
#include "base/Translation.h"
#include "deployment/Deployment.h"
#include "linux/gtk/kit/WindowPresentation.h"

#include <giomm/notification.h>
#include <giomm/simpleaction.h>
#include <giomm/themedicon.h>

#include <utility>

namespace kelo::gtk {

namespace {

constexpr const char* clickAction = "page-notification";
constexpr const char* fullClickAction = "app.page-notification";

} // namespace

void PageNotices::attach(const Glib::RefPtr<Gio::Application>& newApplication,
                         std::function<void()> newOpenWindow) {
    application = newApplication;
    openWindow = std::move(newOpenWindow);
    const auto action = Gio::SimpleAction::create(clickAction, Glib::VARIANT_TYPE_STRING);
    action->signal_activate().connect([this](const Glib::VariantBase& identifier) {
        noteUserRequest();
        click(Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::ustring>>(identifier).get());
    });
    application->add_action(action);
    // While the application still reaches the desktop.
    application->signal_shutdown().connect([this] { withdrawAll(); });
}

void PageNotices::detach() {
    application.reset();
}

void PageNotices::withdrawAll() {
    while (!clickedOf.empty())
        withdraw(std::string(clickedOf.begin()->first));
}

void PageNotices::show(const std::string& identifier,
                       const notification::Notification& notification,
                       std::function<void()> clicked) {
    if (!application)
        return;
    const auto notice = Gio::Notification::create(notification.title);
    notice->set_body(withoutMarkup(notification.body));
    notice->set_icon(Gio::ThemedIcon::create(std::string(deployment::applicationIdentifier)));
    const auto which = Glib::Variant<Glib::ustring>::create(Glib::ustring(identifier));
    notice->set_default_action_variant(fullClickAction, which);
    // For desktops that do nothing when a notification is clicked, as XFCE's does.
    notice->add_button_variant(translated("Show Window"), fullClickAction, which);
    application->send_notification(identifier, notice);
    clickedOf[identifier] = std::move(clicked);
}

void PageNotices::withdraw(const std::string& identifier) {
    if (clickedOf.erase(identifier) > 0 && application)
        application->withdraw_notification(identifier);
}

void PageNotices::click(const std::string& identifier) {
    openWindow();
    const auto known = clickedOf.find(identifier);
    if (known == clickedOf.end())
        return;
    const auto clicked = known->second;
    clicked();
}

} // namespace kelo::gtk
