#include "linux/http/SoupCookieStorage.h"

#include "linux/http/SoupCookieConversion.h"
#include "linux/http/SoupUri.h"

namespace kelo::http {

SoupCookieStorage::SoupCookieStorage()
    : jar_(gobject::GObjectPointer<SoupCookieJar>::adopt(soup_cookie_jar_new())) {
    soup_cookie_jar_set_accept_policy(jar_.get(), SOUP_COOKIE_JAR_ACCEPT_ALWAYS);
}

std::optional<std::vector<platform::HttpCookie>> SoupCookieStorage::cookies(const Url& url) const {
    const SoupUri uri = soupUri(url);
    if (!uri)
        return std::nullopt;
    std::vector<platform::HttpCookie> result;
    GSList* const list = soup_cookie_jar_get_cookie_list(jar_.get(), uri.get(), TRUE);
    for (GSList* link = list; link; link = link->next) {
        const SoupCookiePointer cookie(static_cast<SoupCookie*>(link->data));
        result.push_back(fromSoupCookie(cookie.get()));
    }
    g_slist_free(list);
    return result;
}

} // namespace kelo::http
