#pragma once

#include "base/Published.h"
#include "base/async/Task.h"
#include "platform/EmbeddedWebView.h"

#include <memory>
#include <string>
#include <vector>

namespace kelo::web {

/// The web application in the main window: its web view, and the only way into and out of that
/// view's cookies. One for the life of the process. Main thread only. Nothing here can fail: what
/// goes wrong with a page is shown by the page.
class WebModel final : public ObservableObject,
                       public platform::NavigationDelegate,
                       public std::enable_shared_from_this<WebModel> {
    /// Lets make() alone construct: the view needs a shared pointer to its delegate.
    struct Making {};

public:
    explicit WebModel(Making);

    /// Builds the web view and at once loads the service's base URL into it.
    static std::shared_ptr<WebModel> make();

    /// The same view for the life of the model.
    const std::shared_ptr<platform::EmbeddedWebView> webView;

    /// Path of the page after the last finished navigation, decoded; empty before the first.
    Published<std::string> path{*this, {}};

    /// Everything that was in the view's cookie store after the last finished navigation.
    std::vector<platform::HttpCookie> cachedCookies;

    /// Puts the cookies into the view's store, one after the other, then loads the base URL anew
    /// (with no cookies too).
    Task<void> injectCookies(std::vector<platform::HttpCookie> cookies);

    /// All cookies of the view's store, of every domain, in the store's order.
    Task<std::vector<platform::HttpCookie>> currentCookies();

    Task<void> refreshCookieCache();

    void didFinishNavigation(platform::EmbeddedWebView& finished) override;

private:
    void loadServiceBaseURL();
    static Task<void> refresh(std::shared_ptr<WebModel> model);
};

} // namespace kelo::web
