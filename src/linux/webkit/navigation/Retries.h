#pragma once

#include "base/async/MainLoop.h"
#include "linux/gobject/SignalHandler.h"

#include <webkit/webkit.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

namespace kelo::webkit {

/// Asks for a page that could not be reached again, without being told to: 5, 15 and 60 seconds
/// after it failed, when the network returns, and when the view is shown. Main thread only.
class Retries {
public:
    /// The view must outlive this. tryAgain loads the page.
    Retries(WebKitWebView* view, std::function<void()> tryAgain);
    ~Retries();
    Retries(const Retries&) = delete;
    Retries& operator=(const Retries&) = delete;

    /// A notice in place of the page comes into view. Returns when the page is asked for next;
    /// nothing if that takes the network or the user.
    std::optional<std::chrono::seconds> noticeShown();
    /// A page is asked for, by anybody. The waits go on from where they were.
    void loadStarted();
    /// The waits begin anew.
    void pageArrived();

private:
    void retry();
    void stopTimer();

    std::function<void()> tryAgain;
    bool isWaiting = false;
    std::size_t waits = 0; ///< since the last page that arrived
    std::shared_ptr<Timer> timer;
    gobject::SignalConnection networkConnection;
    gobject::SignalConnection mapConnection;
};

} // namespace kelo::webkit
