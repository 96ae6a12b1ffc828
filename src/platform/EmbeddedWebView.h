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

enum class WebsiteDataStore {
    /// The one persistent store that all web views of the program share.
    persistentDefault,
};

/// Lets the pages of a view post messages to a handler.
struct ScriptMessageRegistration {
    /// Held as long as the view lives: a handler that owns the view must be registered through
    /// something that does not own the handler.
    std::shared_ptr<ScriptMessageHandler> handler;
    /// What a page finds the handler by: window.webkit.messageHandlers.NAME.postMessage(...).
    std::string name;
};

struct WebViewConfiguration {
    WebsiteDataStore websiteDataStore = WebsiteDataStore::persistentDefault;
    bool allowsContentJavaScript = true;
    std::vector<UserScript> userScripts = {};
    std::vector<ScriptMessageRegistration> scriptMessageHandlers = {};
};

class EmbeddedWebView;

class NavigationDelegate {
public:
    virtual ~NavigationDelegate() = default;
    /// The main frame reached the end of a load. Not called for a load that failed.
    virtual void didFinishNavigation(EmbeddedWebView& webView) = 0;
};

/// A web view in a window of ours. Main thread only.
class EmbeddedWebView {
public:
    virtual ~EmbeddedWebView() = default;

    virtual void load(UrlRequest request) = 0;
    /// Of what is shown; nothing before the first load.
    virtual std::optional<Url> url() const = 0;
    /// Held weakly.
    virtual void setNavigationDelegate(std::weak_ptr<NavigationDelegate> delegate) = 0;
    /// Held weakly. A view without one refuses its pages everything that needs a permission.
    virtual void setUserInterfaceDelegate(std::weak_ptr<UserInterfaceDelegate> delegate) = 0;
    virtual void setAllowsBackForwardNavigationGestures(bool allowed) = 0;
    /// Of the data store in the view's configuration; lives as long as the view.
    virtual CookieStore& cookieStore() = 0;
};

} // namespace kelo::platform
