#include "linux/webkit/WebKitCookieStore.h"

#include "linux/gobject/AsyncResult.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/http/SoupCookies.h"

namespace kelo::webkit {

using platform::HttpCookie;

namespace {

using Manager = gobject::GObjectPointer<WebKitCookieManager>;

Task<void> add(Manager manager, HttpCookie cookie) {
    const http::SoupCookiePointer converted = http::toSoupCookie(cookie);
    const auto start = [&manager, &converted](GAsyncReadyCallback ready, gpointer data) {
        webkit_cookie_manager_add_cookie(manager.get(), converted.get(), nullptr, ready, data);
    };
    const auto result = co_await gobject::asyncResult(start);
    GError* error = nullptr;
    webkit_cookie_manager_add_cookie_finish(manager.get(), result.get(), &error);
    if (const gobject::GErrorPointer failure(error); failure)
        g_warning("The web view refused the cookie %s: %s", cookie.name.c_str(), failure->message);
}

Task<std::vector<HttpCookie>> all(Manager manager) {
    const auto start = [&manager](GAsyncReadyCallback ready, gpointer data) {
        webkit_cookie_manager_get_all_cookies(manager.get(), nullptr, ready, data);
    };
    const auto result = co_await gobject::asyncResult(start);
    GError* error = nullptr;
    const gobject::GListPointer list(
        webkit_cookie_manager_get_all_cookies_finish(manager.get(), result.get(), &error));
    if (const gobject::GErrorPointer failure(error); failure)
        g_warning("The web view's cookies could not be read: %s", failure->message);
    std::vector<HttpCookie> cookies;
    for (const GList* link = list.get(); link; link = link->next) {
        const http::SoupCookiePointer cookie(static_cast<SoupCookie*>(link->data));
        cookies.push_back(http::fromSoupCookie(cookie.get()));
    }
    co_return cookies;
}

} // namespace

WebKitCookieStore::WebKitCookieStore(WebKitNetworkSession* session)
    : manager(Manager::share(webkit_network_session_get_cookie_manager(session))) {}

Task<void> WebKitCookieStore::setCookie(HttpCookie cookie) {
    return add(manager, std::move(cookie));
}

Task<std::vector<HttpCookie>> WebKitCookieStore::getAllCookies() {
    return all(manager);
}

} // namespace kelo::webkit
