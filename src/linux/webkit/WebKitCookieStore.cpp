#include "linux/webkit/WebKitCookieStore.h"

#include "linux/gobject/AsyncResult.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/http/CookiePrefix.h"
#include "linux/http/SoupCookies.h"

#include <algorithm>
#include <chrono>

namespace kelo::webkit {

using platform::HttpCookie;

namespace {

using Manager = gobject::GObjectPointer<WebKitCookieManager>;

Task<void> remove(Manager manager, http::SoupCookiePointer cookie) {
    const auto start = [&manager, &cookie](GAsyncReadyCallback ready, gpointer data) {
        webkit_cookie_manager_delete_cookie(manager.get(), cookie.get(), nullptr, ready, data);
    };
    const auto result = co_await gobject::asyncResult(start);
    // Nothing is lost if it fails: the next look at the store finds the cookie again.
    webkit_cookie_manager_delete_cookie_finish(manager.get(), result.get(), nullptr);
}

// The engine stores cookies without a look at their prefixes. So another site, or a page without
// TLS, can plant one under the name of the session's.
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
    std::vector<http::SoupCookiePointer> planted;
    for (const GList* link = list.get(); link; link = link->next) {
        http::SoupCookiePointer cookie(static_cast<SoupCookie*>(link->data));
        HttpCookie converted = http::fromSoupCookie(cookie.get());
        if (http::keepsPromiseOfName(converted))
            cookies.push_back(std::move(converted));
        else
            planted.push_back(std::move(cookie));
    }
    for (http::SoupCookiePointer& cookie : planted) {
        g_warning("A cookie of %s lacks what its name promises; it is deleted",
                  soup_cookie_get_domain(cookie.get()));
        co_await remove(manager, std::move(cookie));
    }
    co_return cookies;
}

/// Such a cookie deletes the one that it replaces.
bool isPast(const HttpCookie& cookie) {
    return cookie.expires && *cookie.expires <= std::chrono::system_clock::now();
}

bool holds(const std::vector<HttpCookie>& cookies, const HttpCookie& wanted) {
    return std::ranges::any_of(cookies, [&](const HttpCookie& cookie) {
        return cookie.name == wanted.name && cookie.domain == wanted.domain &&
               cookie.path == wanted.path;
    });
}

// The engine reports success for a cookie that its store drops. A sign-in would then end on the
// login page again, and nobody would know why.
Task<void> add(Manager manager, HttpCookie cookie) {
    if (!http::keepsPromiseOfName(cookie)) {
        g_warning("A cookie of %s lacks what its name promises; it was not handed to the web view",
                  cookie.domain.c_str());
        co_return;
    }
    const http::SoupCookiePointer converted = http::toSoupCookie(cookie);
    const auto start = [&manager, &converted](GAsyncReadyCallback ready, gpointer data) {
        webkit_cookie_manager_add_cookie(manager.get(), converted.get(), nullptr, ready, data);
    };
    const auto result = co_await gobject::asyncResult(start);
    GError* error = nullptr;
    webkit_cookie_manager_add_cookie_finish(manager.get(), result.get(), &error);
    if (const gobject::GErrorPointer failure(error); failure)
        g_warning("The web view refused the cookie %s: %s", cookie.name.c_str(), failure->message);
    else if (!isPast(cookie) && !holds(co_await all(manager), cookie))
        g_warning("The web view did not keep the cookie %s of %s", cookie.name.c_str(),
                  cookie.domain.c_str());
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
