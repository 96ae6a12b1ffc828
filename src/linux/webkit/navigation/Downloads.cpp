#include "linux/webkit/navigation/Downloads.h"

#include "linux/gobject/GObjectPointer.h"

#include <glib/gstdio.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace kelo::webkit {

namespace {

// For so long, the engine may still count what a script does as part of the user's gesture: it
// passes a click on to what the script awaits.
constexpr std::chrono::seconds longestGesture{10};

std::string withoutFragment(const std::string& address) {
    return address.substr(0, address.find('#'));
}

std::string addressOf(WebKitDownload* download) {
    WebKitURIRequest* const request = webkit_download_get_request(download);
    const char* const address = request ? webkit_uri_request_get_uri(request) : nullptr;
    return address ? address : "";
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

bool isPlain(WebKitDownload* download) {
    WebKitURIResponse* const response = webkit_download_get_response(download);
    const char* const address = response ? webkit_uri_response_get_uri(response) : nullptr;
    const char* const scheme = address ? g_uri_peek_scheme(address) : nullptr;
    return scheme && std::string_view(scheme) == "http";
}

gboolean decideDestination(WebKitDownload* download, const char* suggestion, gpointer) {
    // A redirect may have led there.
    if (isPlain(download)) {
        webkit_download_cancel(download);
        return TRUE;
    }
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

void save(WebKitDownload* download) {
    g_signal_connect(download, "decide-destination", G_CALLBACK(decideDestination), nullptr);
    g_signal_connect(download, "failed", G_CALLBACK(failed), nullptr);
    g_signal_connect(download, "finished", G_CALLBACK(finished), nullptr);
}

bool savesAFile(WebKitContextMenuItem* item) {
    constexpr std::array actions = {WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_LINK_TO_DISK,
                                    WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_IMAGE_TO_DISK,
                                    WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_VIDEO_TO_DISK,
                                    WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_AUDIO_TO_DISK};
    return std::ranges::find(actions, webkit_context_menu_item_get_stock_action(item)) !=
           actions.end();
}

} // namespace

Downloads::Downloads(WebKitNetworkSession* session, WebKitWebView* view, const ShownPage& shown)
    : view(view),
      shown(shown),
      startConnection(gobject::connectSignal(
          session, "download-started",
          +[](WebKitNetworkSession*, WebKitDownload* download, Downloads* self) {
              if (webkit_download_get_web_view(download) == self->view)
                  self->started(download);
          },
          this)),
      menuConnection(gobject::connectSignal(
          view, "context-menu",
          +[](WebKitWebView*, WebKitContextMenu* menu, WebKitHitTestResult*,
              Downloads* self) -> gboolean {
              self->watchMenu(menu);
              return FALSE;
          },
          this)),
      input(GTK_WIDGET(view), [this] { nextGesture(); }) {}

Downloads::~Downloads() {
    if (timer)
        timer->invalidate();
}

void Downloads::watchMenu(WebKitContextMenu* menu) {
    menuChoices.clear();
    for (GList* item = webkit_context_menu_get_items(menu); item; item = item->next) {
        auto* const entry = WEBKIT_CONTEXT_MENU_ITEM(item->data);
        if (!savesAFile(entry))
            continue;
        menuChoices.push_back(gobject::connectSignal(
            webkit_context_menu_item_get_gaction(entry), "activate",
            +[](GAction*, GVariant*, Downloads* self) { self->isChosenInMenu = true; }, this));
    }
}

void Downloads::requested(const std::string& address) {
    waiting.insert_or_assign(withoutFragment(address), gesture);
}

void Downloads::redirected(const std::string& from, const std::string& to) {
    if (const auto found = waiting.find(withoutFragment(from)); found != waiting.end())
        waiting.insert_or_assign(withoutFragment(to), found->second);
}

void Downloads::pageChanged() {
    waiting.clear();
    isChosenInMenu = false;
}

std::optional<Downloads::Gesture> Downloads::gestureFor(WebKitDownload* download) {
    if (std::exchange(isChosenInMenu, false)) {
        nextGesture();
        return gesture;
    }
    const auto found = waiting.find(withoutFragment(addressOf(download)));
    if (found == waiting.end())
        return std::nullopt;
    const Gesture cause = found->second;
    waiting.erase(found);
    return cause;
}

void Downloads::started(WebKitDownload* download) {
    const std::optional<Gesture> cause = gestureFor(download);
    if (cause && shown.isServices() && spent.insert(*cause).second) {
        // Assistive technology presses links without a key or a click that this program sees.
        if (*cause == gesture)
            timer = MainLoop::main().scheduleTimer(longestGesture, [this] { nextGesture(); });
        save(download);
        return;
    }
    webkit_download_cancel(download);
    if (!cause) {
        g_warning("A download was refused that the user had not asked for");
        return;
    }
    g_warning("A download was refused: %s", shown.isServices() ? "it is the second of one gesture"
                                                               : "the page is not the service's");
    notify("download-refused", "Not downloaded",
           shown.isServices()
               ? "A page can save one file with each click. Click again for the next one."
               : "Kelo saves files from " + shown.service.host() +
                     " only. Open this page in your browser to save the file.");
}

void Downloads::nextGesture() {
    ++gesture;
    if (const auto pending = std::exchange(timer, nullptr))
        pending->invalidate();
}

void refuseDownloadsWithoutView(WebKitNetworkSession* session) {
    const auto refuse = +[](WebKitDownload* download, const char*, gpointer) -> gboolean {
        g_warning("A download was refused that no page had started");
        webkit_download_cancel(download);
        return TRUE;
    };
    // Connected after the handler of Downloads, and so asked only where that is missing.
    g_signal_connect_after(
        session, "download-started",
        G_CALLBACK(+[](WebKitNetworkSession*, WebKitDownload* download, GCallback refuse) {
            g_signal_connect(download, "decide-destination", refuse, nullptr);
        }),
        reinterpret_cast<gpointer>(refuse));
}

std::string downloadsFolder() {
    const char* const known = g_get_user_special_dir(G_USER_DIRECTORY_DOWNLOAD);
    const gobject::GText usual(g_build_filename(g_get_home_dir(), "Downloads", nullptr));
    const std::string folder = known ? known : usual.get();
    if (g_mkdir_with_parents(folder.c_str(), 0700) != 0)
        g_warning("The downloads folder could not be made: %s", g_strerror(errno));
    return folder;
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
