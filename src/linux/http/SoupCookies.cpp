#include "linux/http/SoupCookies.h"

#include "linux/gobject/GLibHandles.h"
#include "linux/http/SoupUri.h"

namespace kelo::http {

namespace {

SoupSameSitePolicy toSoupPolicy(platform::SameSitePolicy policy) {
    switch (policy) {
    case platform::SameSitePolicy::none:
        return SOUP_SAME_SITE_POLICY_NONE;
    case platform::SameSitePolicy::strict:
        return SOUP_SAME_SITE_POLICY_STRICT;
    case platform::SameSitePolicy::lax:
    case platform::SameSitePolicy::unspecified:
        break;
    }
    return SOUP_SAME_SITE_POLICY_LAX;
}

platform::SameSitePolicy fromSoupPolicy(SoupSameSitePolicy policy, bool secure) {
    switch (policy) {
    case SOUP_SAME_SITE_POLICY_LAX:
        return platform::SameSitePolicy::lax;
    case SOUP_SAME_SITE_POLICY_STRICT:
        return platform::SameSitePolicy::strict;
    case SOUP_SAME_SITE_POLICY_NONE:
        break;
    }
    return secure ? platform::SameSitePolicy::none : platform::SameSitePolicy::unspecified;
}

std::string textOrEmpty(const char* text) {
    return text ? text : "";
}

} // namespace

SoupCookiePointer toSoupCookie(const platform::HttpCookie& cookie) {
    SoupCookiePointer result(soup_cookie_new(cookie.name.c_str(), cookie.value.c_str(),
                                             cookie.domain.c_str(), cookie.path.c_str(), -1));
    soup_cookie_set_secure(result.get(), cookie.secure);
    soup_cookie_set_http_only(result.get(), cookie.httpOnly);
    soup_cookie_set_same_site_policy(result.get(), toSoupPolicy(cookie.sameSite));
    if (cookie.expires) {
        const gobject::GDateTimePointer moment(
            g_date_time_new_from_unix_utc(cookie.expires->time_since_epoch().count()));
        // Null for a year after 9999. Such a cookie becomes a session cookie.
        if (moment)
            soup_cookie_set_expires(result.get(), moment.get());
    }
    return result;
}

platform::HttpCookie fromSoupCookie(SoupCookie* cookie) {
    platform::HttpCookie result;
    result.name = textOrEmpty(soup_cookie_get_name(cookie));
    result.value = textOrEmpty(soup_cookie_get_value(cookie));
    result.domain = textOrEmpty(soup_cookie_get_domain(cookie));
    result.path = textOrEmpty(soup_cookie_get_path(cookie));
    result.secure = soup_cookie_get_secure(cookie);
    result.httpOnly = soup_cookie_get_http_only(cookie);
    result.sameSite = fromSoupPolicy(soup_cookie_get_same_site_policy(cookie), result.secure);
    if (GDateTime* const expires = soup_cookie_get_expires(cookie))
        result.expires =
            std::chrono::sys_seconds(std::chrono::seconds(g_date_time_to_unix(expires)));
    return result;
}

SoupCookieStorage::SoupCookieStorage()
    : jar_(gobject::GObjectPointer<SoupCookieJar>::adopt(soup_cookie_jar_new())) {
    soup_cookie_jar_set_accept_policy(jar_.get(), SOUP_COOKIE_JAR_ACCEPT_ALWAYS);
}

std::optional<std::vector<platform::HttpCookie>> SoupCookieStorage::cookies(const Url& url) const {
    const SoupUri uri = soupUri(url);
    if (!uri)
        return std::nullopt;
    std::vector<platform::HttpCookie> result;
    const gobject::GSListPointer list(soup_cookie_jar_get_cookie_list(jar_.get(), uri.get(), TRUE));
    for (const GSList* link = list.get(); link; link = link->next) {
        const SoupCookiePointer cookie(static_cast<SoupCookie*>(link->data));
        result.push_back(fromSoupCookie(cookie.get()));
    }
    return result;
}

} // namespace kelo::http
