#pragma once

#include "base/Clock.h"
#include "base/async/MainLoop.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/webkit/content/EngineHandles.h"
#include "linux/webkit/navigation/ShownPage.h"
#include "linux/window/InputWatch.h"
#include "linux/window/OpenPages.h"
#include "linux/window/PageDialogs.h"
#include "platform/EmbeddedWebView.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kelo::webkit {

/// Who shows the dialogs of pages, and who asks pages whether they may be left. Without the one,
/// dialogs are cancelled unseen; without the other, the page is left unasked.
struct DialogServices {
    std::shared_ptr<window::PageDialogs> dialogs;
    std::shared_ptr<window::OpenPages> pages;
};

/// What a view of this configuration has of them. The voice widget is left unasked: it begins anew
/// each time, so nothing of the user's is lost with its page.
inline DialogServices servicesFor(const platform::WebViewConfiguration& configuration,
                                  const DialogServices& services) {
    return {services.dialogs, configuration.linksOpenInBrowser ? nullptr : services.pages};
}

/// The alerts, questions and prompts of a view's pages, and what a page asks before it is left.
/// Main thread only.
///
/// Shown only while the view is on the screen; otherwise, and from the moment that it leaves the
/// screen, they are answered as if the user had cancelled them. Exceptions: a page out of sight is
/// left unasked when the program itself loads another one, and asks when the program is to end.
/// From the second dialog in a short time on, the user can refuse more of them until the view shows
/// another page. The question before leaving a page cannot be refused, but is asked only if the
/// user has clicked or typed in the page.
class ScriptDialogs final : public window::OpenPage {
public:
    struct Handlers {
        /// A dialog is shown. The page's process waits for the user from now on.
        std::function<void()> opened;
        /// It no longer waits.
        std::function<void()> answered;
        /// The page stays: what was to be loaded in its place is not.
        std::function<void()> stayed;
        /// The page's script has closed the page. This object may be destroyed then.
        std::function<void()> closed = nullptr;
    };

    /// The view and the page must outlive this.
    ScriptDialogs(WebKitWebView* view, const ShownPage& shown, DialogServices services,
                  Handlers handlers, SteadyNow now = std::chrono::steady_clock::now);
    ~ScriptDialogs() override;
    ScriptDialogs(const ScriptDialogs&) = delete;
    ScriptDialogs& operator=(const ScriptDialogs&) = delete;

    /// The program is about to load another page, which one that waits for an answer would not let
    /// happen. Cancels the open dialog, and those that follow until the page is left or stays.
    void loadRequested();

    /// A page that does not answer for some seconds is left. While a page is asked already, it
    /// stays.
    void tryToLeave(std::function<void(bool leaves)> decided) override;

private:
    using Time = std::chrono::steady_clock::time_point;

    void connectAll();
    void asked(WebKitScriptDialog* given);
    bool isRefused(bool isBeforeUnload) const;
    void show(WebKitScriptDialog* given);
    void answered(const window::PageAnswer& answer);
    void cancel();
    void stay();
    void leaveTheScreen();
    void loadChanged(WebKitLoadEvent event);
    void processEnded();
    void pageClosed();
    void decide(bool leaves);
    void startLimit();
    void stopLimit();

    WebKitWebView* view;
    const ShownPage& shown;
    DialogServices services;
    Handlers handlers;
    SteadyNow now;
    ScriptDialogPointer open; ///< shown to the user, or waiting for that
    std::shared_ptr<window::PageDialog> dialog;
    std::optional<Time> lastAnswer;
    bool isUsed = false;          ///< the page: somebody has clicked or typed in it
    bool isSilenced = false;      ///< by the user
    bool isBeingLeft = false;     ///< for a page that the program loads
    bool isLeftUnasked = false;   ///< for a page that the program loads
    std::shared_ptr<Timer> limit; ///< for the page to say whether it objects
    std::function<void(bool leaves)> decided;
    std::vector<gobject::SignalConnection> connections;
    window::InputWatch input;
};

} // namespace kelo::webkit
