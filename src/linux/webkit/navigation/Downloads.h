#pragma once

#include "base/async/MainLoop.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/webkit/navigation/SaveMenu.h"
#include "linux/webkit/navigation/ShownPage.h"
#include "linux/window/InputWatch.h"

#include <webkit/webkit.h>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace kelo::downloads {
class DownloadList;
}

namespace kelo::webkit {

/// Which downloads of a view are allowed. Those are saved, and the session's list of downloads
/// tells of them; of a refused one it tells if the user caused it.
///
/// The page can start one download with each gesture of the user, which is a key, a click or a
/// touch, and only while it is the service's. Any other is cancelled before anything is saved. Main
/// thread only.
class Downloads {
public:
    /// shown: of the view. All three must outlive this. The session has its list of downloads.
    Downloads(WebKitNetworkSession* session, WebKitWebView* view, const ShownPage& shown);
    ~Downloads();
    Downloads(const Downloads&) = delete;
    Downloads& operator=(const Downloads&) = delete;

    /// The user's gesture leads to this address, which may turn out to be a file.
    void requested(const std::string& address);
    /// What was requested at one address is at another.
    void redirected(const std::string& from, const std::string& to);
    /// The view shows another document: what was requested before has not become a file.
    void pageChanged();

private:
    using Gesture = unsigned; ///< counted

    void started(WebKitDownload* download);
    std::optional<Gesture> gestureFor(WebKitDownload* download);
    void nextGesture();

    WebKitWebView* view;
    const ShownPage& shown;
    std::shared_ptr<downloads::DownloadList> list;
    Gesture gesture = 0;                    ///< the latest
    std::map<std::string, Gesture> waiting; ///< by address: not a file yet
    std::set<Gesture> spent;                ///< these have led to a download
    std::shared_ptr<Timer> timer;
    gobject::SignalConnection startConnection;
    SaveMenu menu;
    gobject::GObjectPointer<WebKitDownload> chosenInMenu; ///< the last, until it starts
    window::InputWatch input;
};

/// Cancels every download of the session that no view's Downloads has taken, for instance of a view
/// that is gone. The engine would save it. Call it before there is a view.
void refuseDownloadsWithoutView(WebKitNetworkSession* session);

} // namespace kelo::webkit
