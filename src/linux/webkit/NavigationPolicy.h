#pragma once

#include "base/Url.h"
#include "linux/webkit/ExternalLinks.h"

#include <webkit/webkit.h>

#include <functional>

namespace kelo::webkit {

/// Where a link leads: into the view, into a new window (there are none: into the view or to the
/// browser), to another program, into the downloads folder, or nowhere.
class NavigationPolicy {
public:
    /// tryAgain is called when the user asks a notice for another attempt.
    NavigationPolicy(Url service, ExternalOpener openExternally, std::function<void()> tryAgain);

    /// Takes the decision; false leaves it to the engine.
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
