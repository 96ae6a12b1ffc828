#pragma once

#include "base/ObservableObject.h"
#include "base/async/Task.h"
#include "platform/EmbeddedWebView.h"

#include <memory>
#include <string>
#include <vector>

namespace kelo::web {

/// The web application in the main window: its web view and the access to that view's cookies. One
/// for the life of the process. Main thread only. Nothing here throws: problems of a page are shown
/// in the page.
class WebModel final : public ObservableObject,
                       public platform::NavigationDelegate,
                       public std::enable_shared_from_this<WebModel> {
    /// Only make() can construct one: the view needs a shared pointer to its delegate.
    struct Making {};

public:
    explicit WebModel(Making);

    /// Creates the web view and immediately loads the service's base URL.
    static std::shared_ptr<WebModel> make();

    /// The same view for the life of the model.
    const std::shared_ptr<platform::EmbeddedWebView> webView;

    /// Path of the page after the last finished navigation, decoded; empty before the first.
    Published<std::string> path{*this, {}};

    /// All cookies of the view's store, as of the last finished navigation.
    std::vector<platform::HttpCookie> cachedCookies;

    /// Sets the cookies in the view's store one after another, then reloads the base URL, even if
    /// the list is empty.
    Task<void> injectCookies(std::vector<platform::HttpCookie> cookies);

    /// All cookies of the view's store, of all domains, in the store's order.
    Task<std::vector<platform::HttpCookie>> currentCookies();

    Task<void> refreshCookieCache();

    void didFinishNavigation(platform::EmbeddedWebView& finished) override;

private:
    void loadServiceBaseURL();
    static Task<void> refresh(std::shared_ptr<WebModel> model);
};

} // namespace kelo::web
