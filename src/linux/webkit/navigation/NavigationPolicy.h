#pragma once

#include "linux/webkit/navigation/Downloads.h"
#include "linux/webkit/navigation/ExternalLinks.h"
#include "linux/webkit/navigation/ShownPage.h"

#include <webkit/webkit.h>

#include <functional>
#include <string>

namespace kelo::webkit {

/// Decides where a navigation leads: into the view, to another program, into the downloads folder,
/// or nowhere. A form is not sent again by a reload: its address alone is loaded. A file that a
/// frame is sent is saved only if it comes from the service.
///
/// A link that the user follows to another origin than the service's or the shown page's opens in
/// the browser. Redirects, forms and scripts may lead the view anywhere: the service may sign its
/// users in through another host. Nothing is loaded over plain http.
///
/// There are no new windows: a link that asks for one opens in the view if it leads to the service,
/// otherwise in the browser.
class NavigationPolicy {
public:
    /// shown, downloads: of the view; must outlive this. linksOpenInBrowser: as in
    /// WebViewConfiguration. tryAgain is called when the user clicks "Try again" on an error page.
    NavigationPolicy(const ShownPage& shown, Downloads& downloads, bool linksOpenInBrowser,
                     ExternalOpener openExternally, std::function<void()> tryAgain);

    /// True if the decision was made; false leaves it to the engine.
    bool decide(WebKitWebView* view, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type);

private:
    bool decideNavigation(WebKitWebView* view, WebKitPolicyDecision* decision,
                          WebKitNavigationAction* action);
    /// Tells the downloads of a request that the user has caused.
    void noteRequest(WebKitWebView* view, WebKitNavigationAction* action,
                     const std::string& address);
    /// Whether the address has the service's origin or the shown page's.
    bool isOfThePage(const std::string& address) const;
    bool decideLink(WebKitWebView* view, WebKitPolicyDecision* decision,
                    const std::string& address);
    bool leavesThePage(WebKitWebView* view, const std::string& address) const;
    void decideNewWindow(WebKitWebView* view, WebKitPolicyDecision* decision,
                         WebKitNavigationAction* action);
    bool decideResponse(WebKitPolicyDecision* decision, WebKitResponsePolicyDecision* response);

    const ShownPage& shown;
    Downloads& downloads;
    std::string ownLoad; ///< where the view's own load has got to
    bool linksOpenInBrowser;
    ExternalOpener openExternally;
    std::function<void()> tryAgain;
};

} // namespace kelo::webkit
