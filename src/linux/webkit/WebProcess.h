#pragma once

#include "base/async/MainLoop.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/window/InputWatch.h"

#include <webkit/webkit.h>

#include <functional>
#include <memory>

namespace kelo::webkit {

/// The process that runs a view's page. When it has ended, the engine starts another one for the
/// next page of the view. Main thread only.
class WebProcess {
public:
    struct Handlers {
        /// What answers() says has changed.
        std::function<void()> responsivenessChanged;
        /// The process has ended, and the page with it. Not called for endIfItHangs().
        std::function<void(WebKitWebProcessTerminationReason reason)> failed;
        /// Called before failed, and for endIfItHangs() as well.
        std::function<void()> ended;
        /// Whether something is expected of the process. While it is, expectAnswer() is repeated.
        std::function<bool()> isAwaited;
    };

    WebProcess(WebKitWebView* view, Handlers handlers);
    ~WebProcess();
    WebProcess(const WebProcess&) = delete;
    WebProcess& operator=(const WebProcess&) = delete;

    /// False once the process has not answered for some seconds, until it does. It is asked with
    /// each key, click and touch, and when it is to load a page. A page that shows an alert
    /// answers.
    bool answers() const;
    /// Asks the process. Called for each key, click and touch as well.
    void expectAnswer();
    /// A process that hangs would never load another page.
    void endIfItHangs();
    /// A script has opened a dialog, and the process waits for the user from now on.
    void dialogOpened();
    /// The dialog is answered, and the process goes on, or should.
    void dialogAnswered();
    /// The view shows another document from now on.
    void pageChanged();

private:
    void ask();
    void answered();
    void askAgain();
    void stopTimers();
    void terminated(WebKitWebProcessTerminationReason reason);

    WebKitWebView* view;
    Handlers handlers;
    bool isNew = false;       ///< and takes the place of another
    bool isAsked = false;     ///< and has not answered yet
    bool isOverdue = false;   ///< the answer is
    bool showsDialog = false; ///< of a script, which waits for the user
    std::shared_ptr<Timer> timer;
    std::shared_ptr<Timer> repetition;
    std::shared_ptr<WebProcess*> self; ///< for answers that come when this is gone
    gobject::SignalConnection responsivenessConnection;
    gobject::SignalConnection terminationConnection;
    window::InputWatch input;
};

} // namespace kelo::webkit
