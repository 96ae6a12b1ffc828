#pragma once

#include "base/Url.h"
#include "platform/CookieStore.h"
#include "platform/Geometry.h"
#include "platform/ScriptMessage.h"
#include "platform/UrlRequest.h"
#include "platform/WebPermission.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::platform {

enum class InjectionTime { atDocumentStart = 0, atDocumentEnd = 1 };

struct UserScript {
    std::string source;
    InjectionTime injectionTime = InjectionTime::atDocumentEnd;
    bool forMainFrameOnly = false;
};

/// Where a view keeps cookies, web storage and cache.
enum class WebsiteDataStore {
    /// The persistent store that all web views of the program share.
    persistentDefault,
};

/// Lets the pages of a view post messages to a handler.
struct ScriptMessageRegistration {
    /// The view holds it strongly. To avoid a reference cycle, an object that owns the view must
    /// register a handler that refers to it weakly.
    std::shared_ptr<ScriptMessageHandler> handler;
    /// Letters, digits and "_". A page calls
    /// window.webkit.messageHandlers.NAME.postMessage(...).
    std::string name;
};

struct WebViewConfiguration {
    WebsiteDataStore websiteDataStore = WebsiteDataStore::persistentDefault;
    /// Whether pages may run their own scripts. User scripts run in either case.
    bool allowsContentJavaScript = true;
    /// Whether pages may play sound before the user has clicked in them.
    bool allowsAutoplay = false;
    /// Whether a link that the user clicks opens in the browser and leaves the view's page alone.
    /// Links within the page and navigations by the page's scripts stay in the view.
    bool linksOpenInBrowser = false;
    std::vector<UserScript> userScripts = {};
    std::vector<ScriptMessageRegistration> scriptMessageHandlers = {};
};

class EmbeddedWebView;

class NavigationDelegate {
public:
    virtual ~NavigationDelegate() = default;
    /// The main frame has finished a load, whatever its HTTP status. Not called for a load that
    /// failed, timed out or was replaced by another.
    virtual void didFinishNavigation(EmbeddedWebView& webView) = 0;
};

/// A web view that can be shown in a window of the program. Main thread only.
class EmbeddedWebView {
public:
    virtual ~EmbeddedWebView() = default;

    /// Loads a page: GET only, without a body. The request's timeout is the longest time without
    /// progress until the page's document is complete; for images and the like there is none. When
    /// it passes, the load is stopped and a page with the reason is shown. The timeout also holds
    /// for later loads that the user or the page starts, until the next call.
    virtual void load(UrlRequest request) = 0;
    /// URL of the current page; empty before the first load.
    virtual std::optional<Url> url() const = 0;
    /// Held weakly.
    virtual void setNavigationDelegate(std::weak_ptr<NavigationDelegate> delegate) = 0;
    /// Held weakly. In a view that never had a delegate, the desktop asks its user for what the
    /// service's page requests.
    virtual void setUserInterfaceDelegate(std::weak_ptr<UserInterfaceDelegate> delegate) = 0;
    virtual void setAllowsBackForwardNavigationGestures(bool allowed) = 0;
    /// Allowed at first. While it is not, the microphone and the camera are off: a capture that
    /// runs ends for good, and pages are denied another one without asking the delegate.
    virtual void setAllowsMediaCapture(bool allowed) = 0;
    /// The cookies of the view's data store. The reference is valid as long as the view.
    virtual CookieStore& cookieStore() = 0;
};

} // namespace kelo::platform
