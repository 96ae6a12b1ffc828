#pragma once

#include "platform/CookieStore.h"
#include "platform/Url.h"
#include "platform/UrlRequest.h"

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

struct WebViewConfiguration {
    WebsiteDataStore websiteDataStore = WebsiteDataStore::persistentDefault;
    bool allowsContentJavaScript = true;
    std::vector<UserScript> userScripts = {};
};

struct Rectangle {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    friend bool operator==(const Rectangle&, const Rectangle&) = default;
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
    virtual void setAllowsBackForwardNavigationGestures(bool allowed) = 0;
    /// Of the data store in the view's configuration; lives as long as the view.
    virtual CookieStore& cookieStore() = 0;
};

} // namespace kelo::platform
