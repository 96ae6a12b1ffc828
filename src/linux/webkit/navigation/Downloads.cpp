#include "linux/webkit/navigation/Downloads.h"

#include "base/Translation.h"
#include "linux/webkit/navigation/SavedDownload.h"

#include <chrono>
#include <utility>

namespace kelo::webkit {

namespace {

// For so long, the engine may still count what a script does as part of the user's gesture: it
// passes a click on to what the script awaits.
constexpr std::chrono::seconds longestGesture{10};

// A download that is cancelled as it starts corrupts the memory of the network process of WebKitGTK
// 2.54, which aborts soon after ("malloc_consolidate(): unaligned fastbin chunk"). Not reported
// there as far as we know. To be cancelled at its start again when
// Download.FollowsAnotherOnceThereIsAnotherGesture passes with that.
void refuse(WebKitDownload* download) {
    const auto cancel = +[](WebKitDownload* refused, const char*, gpointer) -> gboolean {
        webkit_download_cancel(refused);
        return TRUE;
    };
    g_signal_connect(download, "decide-destination", G_CALLBACK(cancel), nullptr);
}

} // namespace

Downloads::Downloads(WebKitNetworkSession* session, WebKitWebView* view, const ShownPage& shown)
    : view(view),
      shown(shown),
      list(downloadListOf(session)),
      startConnection(gobject::connectSignal(
          session, "download-started",
          +[](WebKitNetworkSession*, WebKitDownload* download, Downloads* self) {
              if (webkit_download_get_web_view(download) == self->view)
                  self->started(download);
          },
          this)),
      menu(view,
           [this](const std::string& address) {
               chosenInMenu = gobject::GObjectPointer<WebKitDownload>::adopt(
                   webkit_web_view_download_uri(this->view, address.c_str()));
           }),
      input(GTK_WIDGET(view), [this] { nextGesture(); }) {}

Downloads::~Downloads() {
    if (timer)
        timer->invalidate();
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
}

std::optional<Downloads::Gesture> Downloads::gestureFor(WebKitDownload* download) {
    if (chosenInMenu.get() == download) {
        chosenInMenu = {};
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
        saveDownload(download, list);
        return;
    }
    refuse(download);
    if (!cause) {
        g_warning("A download was refused that the user had not asked for");
        return;
    }
    g_warning("A download was refused: %s", shown.isServices() ? "it is the second of one gesture"
                                                               : "the page is not the service's");
    list->refuse(fileNameIn(download),
                 shown.isServices()
                     ? translated("A page can save one file with each click. Click again for the "
                                  "next one.")
                     : translated("Kelo saves files from %1 only. Open this page in your browser "
                                  "to save the file.",
                                  {shown.service.host()}));
}

void Downloads::nextGesture() {
    ++gesture;
    if (const auto pending = std::exchange(timer, nullptr))
        pending->invalidate();
}

void refuseDownloadsWithoutView(WebKitNetworkSession* session) {
    const auto started = +[](WebKitNetworkSession*, WebKitDownload* download, gpointer) {
        const auto refuse = +[](WebKitDownload* refused, const char*, gpointer) -> gboolean {
            g_warning("A download was refused that no page had started");
            webkit_download_cancel(refused);
            return TRUE;
        };
        g_signal_connect(download, "decide-destination", G_CALLBACK(refuse), nullptr);
    };
    // Connected after the handler of Downloads, and so asked only where that is missing.
    g_signal_connect_after(session, "download-started", G_CALLBACK(started), nullptr);
}

} // namespace kelo::webkit
