#pragma once

#include "base/Url.h"
#include "linux/webkit/ExternalLinks.h"

#include <webkit/webkit.h>

#include <functional>

namespace kelo::webkit {

/// Decides where a navigation leads: into the view, to another program, into the downloads folder,
/// or nowhere. There are no new windows: a link that asks for one opens in the view if it leads to
/// the service, otherwise in the browser.
class NavigationPolicy {
public:
    /// tryAgain is called when the user clicks "Try again" on an error page.
    NavigationPolicy(Url service, ExternalOpener openExternally, std::function<void()> tryAgain);

    /// True if the decision was made; false leaves it to the engine.
    bool decide(WebKitWebView* view, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type);

private:
    bool decideNavigation(WebKitPolicyDecision* decision, WebKitNavigationAction* action);
    void decideNewWindow(WebKitWebView* view, WebKitPolicyDecision* decision,
                         WebKitNavigationAction* action);
    bool decideResponse(WebKitPolicyDecision* decision, WebKitResponsePolicyDecision* response);

    Url service;
    ExternalOpener openExternally;
    std::function<void()> tryAgain;
};

} // namespace kelo::webkit
