#include "linux/http/SoupCookieConversion.h"

namespace kelo::http {

namespace {

struct DateTimeDeleter {
    void operator()(GDateTime* time) const { g_date_time_unref(time); }
};
using DateTimePointer = std::unique_ptr<GDateTime, DateTimeDeleter>;

SoupSameSitePolicy toSoupPolicy(platform::SameSitePolicy policy) {
    switch (policy) {
    case platform::SameSitePolicy::lax:
        return SOUP_SAME_SITE_POLICY_LAX;
    case platform::SameSitePolicy::strict:
        return SOUP_SAME_SITE_POLICY_STRICT;
    case platform::SameSitePolicy::none:
    case platform::SameSitePolicy::unspecified:
        break;
    }
    return SOUP_SAME_SITE_POLICY_NONE;
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
        const DateTimePointer moment(
            g_date_time_new_from_unix_utc(cookie.expires->time_since_epoch().count()));
        // Nothing only for a year past 9999: a cookie of that kind ends with the session instead.
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

} // namespace kelo::http
