#pragma once

#include "base/async/MainLoop.h"
#include "platform/UrlRequest.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kelo::webkit {

/// The state of a view's current load: whether its document is a page or an error page, when it has
/// waited too long, and how often it may be repeated. Knows no engine: the view reports what the
/// engine does, and acts on the answers. Main thread only.
class PageLoad {
public:
    /// timedOut is called when a page's document has made no progress for the request's timeout.
    /// The load counts as failed by then.
    explicit PageLoad(std::function<void()> timedOut);
    ~PageLoad();
    PageLoad(const PageLoad&) = delete;
    PageLoad& operator=(const PageLoad&) = delete;

    /// The engine is about to be asked for a page. The request's timeout also holds for the loads
    /// that follow, until the next request.
    void requestPage(const platform::UrlRequest& request);
    /// The engine is about to be asked for an error page in place of this address.
    void requestErrorPage(std::string address);

    /// The engine has begun to load a document, requested or not.
    void started();
    /// The engine asks for the document, with this method of HTTP (null: GET).
    void requested(const char* method);
    /// More of the document has arrived.
    void progressed();
    /// The engine shows the document from now on, though the rest of it may still be missing.
    void committed();
    /// The document is here; images and the like may still be missing. Ends the timeout.
    void documentCompleted();
    /// The engine has ended the load. True if it was a page that arrived; the engine also ends
    /// loads that failed, and those of error pages.
    bool finished();
    /// The page will not arrive.
    void failed();
    /// The web process has ended, and the page with it.
    void processEnded();

    /// Whether the document is the answer to a form. Its address alone asks for something else.
    bool isAnswerToForm() const { return sentForm; }
    bool isPage() const { return stage == Stage::page; }
    /// An error page was requested and has not started. A failure that is reported now belongs to
    /// the load before it.
    bool awaitsErrorPage() const { return errorPageRequested; }
    /// The address to load when the user asks the shown error page to try again; empty while no
    /// error page is shown.
    std::string addressToTryAgain() const;

    /// The user is asked something before the load goes on. Until goOn(), the timeout rests; then
    /// it begins anew.
    void pause();
    void goOn();

    /// The requested page, unless it is shown, has failed, or was requested of a web process that
    /// has shown no document before. Each request is handed out once: in case the process hangs or
    /// dies.
    std::optional<platform::UrlRequest> takeUnanswered();
    /// Whether there is one, and it is still expected.
    bool isUnanswered() const { return unanswered && timer; }

    /// Whether a page that the engine lost through its own fault may be loaded again: three times
    /// until a document is shown.
    bool repeatLost();
    /// Whether a refused certificate may be allowed: three times until a document is shown or the
    /// load is repeated.
    bool allowCertificate();

    /// How long the page may go without progress.
    std::chrono::seconds timeout() const { return limit; }

private:
    enum class Stage {
        page,      ///< a page is on its way or shown
        failed,    ///< the page will not arrive
        errorPage, ///< an error page is on its way or shown
    };

    void startTimer();
    void stopTimer();

    std::function<void()> timedOut;
    std::chrono::seconds limit{60};
    std::shared_ptr<Timer> timer;
    Stage stage = Stage::page;
    bool errorPageRequested = false;
    std::string failedAddress;
    bool sentForm = false;
    bool processHasShownADocument = false;
    std::optional<platform::UrlRequest> unanswered;
    bool isPaused = false; ///< while the timeout would run
    int certificateAllowances = 0;
    int repetitions = 0;
};

} // namespace kelo::webkit
