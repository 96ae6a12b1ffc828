#include "linux/webkit/navigation/Downloads.h"

#include "linux/gobject/GObjectPointer.h"

#include <glib/gstdio.h>

#include <filesystem>
#include <memory>
#include <system_error>

namespace kelo::webkit {

namespace {

std::string downloadsFolder() {
    const char* const folder = g_get_user_special_dir(G_USER_DIRECTORY_DOWNLOAD);
    return folder ? folder : g_get_home_dir();
}

void notify(const char* identifier, const std::string& title, const std::string& body) {
    GApplication* const application = g_application_get_default();
    if (!application || !g_application_get_is_registered(application))
        return;
    const auto notification =
        gobject::GObjectPointer<GNotification>::adopt(g_notification_new(title.c_str()));
    g_notification_set_body(notification.get(), body.c_str());
    g_application_send_notification(application, identifier, notification.get());
}

gboolean decideDestination(WebKitDownload* download, const char* suggestion, gpointer) {
    const std::string path = freePathFor(downloadsFolder(), suggestion ? suggestion : "");
    webkit_download_set_destination(download, path.c_str());
    return TRUE;
}

std::string fileNameOf(WebKitDownload* download) {
    const char* const destination = webkit_download_get_destination(download);
    return destination ? std::filesystem::path(destination).filename().string() : "The file";
}

void failed(WebKitDownload* download, GError* error, gpointer) {
    g_warning("A download failed: %s", error->message);
    g_object_set_data(G_OBJECT(download), "kelo-failed", download);
    notify("download", "Download failed", fileNameOf(download) + " could not be saved. Try again.");
}

// The engine emits it after a failure as well.
void finished(WebKitDownload* download, gpointer) {
    if (!g_object_get_data(G_OBJECT(download), "kelo-failed"))
        notify("download", "Download finished",
               fileNameOf(download) + " is in your downloads folder.");
}

void started(WebKitNetworkSession*, WebKitDownload* download, gpointer) {
    g_signal_connect(download, "decide-destination", G_CALLBACK(decideDestination), nullptr);
    g_signal_connect(download, "failed", G_CALLBACK(failed), nullptr);
    g_signal_connect(download, "finished", G_CALLBACK(finished), nullptr);
}

} // namespace

void saveDownloadsOf(WebKitNetworkSession* session) {
    g_signal_connect(session, "download-started", G_CALLBACK(started), nullptr);
}

std::string freePathFor(const std::string& folder, const std::string& suggestion) {
    std::string name = suggestion;
    for (char& c : name)
        if (c == '/' || static_cast<unsigned char>(c) < 0x20)
            c = '_';
    name.erase(0, name.find_first_not_of(". "));
    if (name.empty())
        name = "download";
    const std::filesystem::path wanted(name);
    const std::string stem = wanted.stem().string();
    const std::string extension = wanted.extension().string();
    std::filesystem::path path = std::filesystem::path(folder) / name;
    std::error_code unreadable;
    for (int number = 2; std::filesystem::exists(path, unreadable); ++number)
        path = std::filesystem::path(folder) /
               (stem + " (" + std::to_string(number) + ")" + extension);
    return path.string();
}

} // namespace kelo::webkit
