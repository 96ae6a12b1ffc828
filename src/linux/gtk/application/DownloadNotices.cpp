#include "linux/gtk/application/DownloadNotices.h"

#include "base/ShownText.h"
#include "base/Translation.h"

#include <giomm/notification.h>
#include <giomm/simpleaction.h>
#include <glib.h>
#include <glibmm/variant.h>

#include <utility>

namespace kelo::gtk {

namespace {

constexpr const char* openAction = "open-download";
constexpr const char* showAction = "show-download";

std::string full(const char* action) {
    return std::string("app.") + action;
}

Glib::RefPtr<Gio::Notification> noticeOfFailure(const downloads::Download& download) {
    const auto notice = Gio::Notification::create(translated("Download failed"));
    notice->set_body(withoutMarkup(download.name + "\n" + download.sentence));
    notice->set_default_action("app.open");
    return notice;
}

Glib::RefPtr<Gio::Notification> noticeOf(const downloads::Download& download) {
    if (download.status == downloads::DownloadStatus::failed)
        return noticeOfFailure(download);
    const auto notice = Gio::Notification::create(translated("Download finished"));
    notice->set_body(withoutMarkup(download.name));
    notice->set_default_action("app.open");
    // A folder above may have a name in another encoding, which cannot be sent.
    if (!g_utf8_validate(download.path.c_str(), -1, nullptr))
        return notice;
    const auto path = Glib::Variant<Glib::ustring>::create(download.path);
    notice->set_default_action_variant(full(download.mayBeOpened ? openAction : showAction), path);
    if (download.mayBeOpened)
        notice->add_button_variant(translated("Open"), full(openAction), path);
    notice->add_button_variant(translated("Show in Folder"), full(showAction), path);
    return notice;
}

} // namespace

DownloadNotices::DownloadNotices(Gio::Application& application,
                                 std::shared_ptr<downloads::DownloadList> list,
                                 std::function<bool()> isSeen)
    : application(application), list(std::move(list)), isSeen(std::move(isSeen)) {
    addAction(openAction, &downloads::DownloadList::open);
    addAction(showAction, &downloads::DownloadList::showInFolder);
}

DownloadNotices::~DownloadNotices() {
    for (const std::string& identifier : shown)
        application.withdraw_notification(identifier);
    application.remove_action(openAction);
    application.remove_action(showAction);
}

void DownloadNotices::addAction(const char* name,
                                void (downloads::DownloadList::*run)(const std::string& path)) {
    application.add_action_with_parameter(
        name, Glib::VARIANT_TYPE_STRING, [list = list, run](const Glib::VariantBase& path) {
            const auto given = Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::ustring>>(path);
            ((*list).*run)(given.get().raw());
        });
}

void DownloadNotices::downloadEnded(const downloads::Download& download) {
    if (isSeen())
        return;
    shown.push_back("download-" + std::to_string(download.identifier));
    application.send_notification(shown.back(), noticeOf(download));
}

} // namespace kelo::gtk
