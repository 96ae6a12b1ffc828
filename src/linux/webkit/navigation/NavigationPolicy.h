#pragma once

#include "base/Url.h"
#include "linux/webkit/navigation/ExternalLinks.h"

#include <webkit/webkit.h>

#include <functional>

namespace kelo::webkit {

/// Decides where a navigation leads: into the view, to another program, into the downloads folder,
/// or nowhere. There are no new windows: a link that asks for one opens in the view if it leads to
/// the service, otherwise in the browser.
class NavigationPolicy {
public:
    /// linksOpenInBrowser: as in WebViewConfiguration. tryAgain is called when the user clicks "Try
    /// again" on an error page.
    NavigationPolicy(Url service, bool linksOpenInBrowser, ExternalOpener openExternally,
                     std::function<void()> tryAgain);

    /// True if the decision was made; false leaves it to the engine.
    bool decide(WebKitWebView* view, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type);

private:
    bool decideNavigation(WebKitWebView* view, WebKitPolicyDecision* decision,
                          WebKitNavigationAction* action);
    bool belongsInBrowser(WebKitWebView* view, WebKitNavigationAction* action) const;
    void decideNewWindow(WebKitWebView* view, WebKitPolicyDecision* decision,
                         WebKitNavigationAction* action);
    bool decideResponse(WebKitPolicyDecision* decision, WebKitResponsePolicyDecision* response);

    Url service;
    bool linksOpenInBrowser;
    ExternalOpener openExternally;
    std::function<void()> tryAgain;
};

} // namespace kelo::webkit
