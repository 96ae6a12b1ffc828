#include "web/WebModel.h"

#include "base/async/Spawn.h"
#include "platform/Desktop.h"
#include "service/ServiceEndpoints.h"
#include "web/UserScript.h"

namespace kelo::web {

namespace {

using platform::HttpCookie;

platform::WebViewConfiguration configuration() {
    platform::WebViewConfiguration configuration;
    configuration.websiteDataStore = platform::WebsiteDataStore::persistentDefault;
    configuration.allowsContentJavaScript = true;
    configuration.userScripts = {{std::string(hidePasskeyButtonsScript),
                                  platform::InjectionTime::atDocumentEnd,
                                  /*forMainFrameOnly=*/false}};
    return configuration;
}

} // namespace

WebModel::WebModel(Making)
    : webView(platform::Desktop::current().makeWebView(platform::Rectangle{}, configuration())) {}

std::shared_ptr<WebModel> WebModel::make() {
    auto model = std::make_shared<WebModel>(Making());
    model->webView->setNavigationDelegate(model);
    model->webView->setAllowsBackForwardNavigationGestures(true);
    model->loadServiceBaseURL();
    return model;
}

void WebModel::loadServiceBaseURL() {
    webView->load(platform::UrlRequest{service::serviceBaseURL()});
}

Task<void> WebModel::injectCookies(std::vector<HttpCookie> cookies) {
    for (HttpCookie& cookie : cookies)
        co_await webView->cookieStore().setCookie(std::move(cookie));
    loadServiceBaseURL();
}

Task<std::vector<HttpCookie>> WebModel::currentCookies() {
    co_return co_await webView->cookieStore().getAllCookies();
}

Task<void> WebModel::refreshCookieCache() {
    cachedCookies = co_await currentCookies();
}

void WebModel::didFinishNavigation(platform::EmbeddedWebView& finished) {
    const auto url = finished.url();
    path = url ? url->path() : std::string();
    spawn(refresh(shared_from_this()));
}

Task<void> WebModel::refresh(std::shared_ptr<WebModel> model) {
    co_await model->refreshCookieCache();
}

} // namespace kelo::web
