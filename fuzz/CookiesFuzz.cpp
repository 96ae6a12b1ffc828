#include "FuzzInput.h"
#include "GLibComplaints.h"
#include "linux/http/SoupCookies.h"
#include "linux/http/SoupUri.h"

#include <array>
#include <charconv>
#include <string>

// Cookies of a server, and the same as plain values. First line: the address that the cookies come
// from, after a blank the seconds at which a cookie expires. Each other line: a Set-Cookie header.

using namespace kelo;
using fuzz::require;
using platform::HttpCookie;
using platform::SameSitePolicy;

namespace {

HttpCookie thereAndBack(const HttpCookie& cookie) {
    return http::fromSoupCookie(http::toSoupCookie(cookie).get());
}

/// The engine's strings end with a NUL, so a plain value never has one.
void examinePlain(const HttpCookie& cookie) {
    for (const std::string* text : {&cookie.name, &cookie.value, &cookie.domain, &cookie.path})
        require(text->find('\0') == std::string::npos);
    require(cookie.sameSite != SameSitePolicy::none || cookie.secure);
    require(cookie.sameSite != SameSitePolicy::unspecified || !cookie.secure);
    HttpCookie kept = cookie;
    if (kept.sameSite == SameSitePolicy::unspecified)
        kept.sameSite = SameSitePolicy::lax;
    require(thereAndBack(cookie) == kept);
}

/// A cookie of the engine, made plain and handed back to the engine, is the same cookie; a policy
/// that it cannot have becomes Lax.
void examineEngineCookie(SoupCookie* cookie) {
    const HttpCookie plain = http::fromSoupCookie(cookie);
    examinePlain(plain);
    const http::SoupCookiePointer back = http::toSoupCookie(plain);
    require(soup_cookie_equal(cookie, back.get()));
    require(g_strcmp0(soup_cookie_get_domain(cookie), soup_cookie_get_domain(back.get())) == 0);
    require(soup_cookie_get_secure(cookie) == soup_cookie_get_secure(back.get()));
    require(soup_cookie_get_http_only(cookie) == soup_cookie_get_http_only(back.get()));
    require(soup_cookie_get_same_site_policy(back.get()) ==
            (plain.sameSite == SameSitePolicy::unspecified
                 ? SOUP_SAME_SITE_POLICY_LAX
                 : soup_cookie_get_same_site_policy(cookie)));
    GDateTime* const expires = soup_cookie_get_expires(cookie);
    GDateTime* const backExpires = soup_cookie_get_expires(back.get());
    require(!expires == !backExpires);
    require(!expires || g_date_time_to_unix(expires) == g_date_time_to_unix(backExpires));
}

/// A plain value with any combination of attributes, taken over by the engine.
void examineAttributes(const HttpCookie& start, std::optional<std::int64_t> seconds) {
    for (const SameSitePolicy policy : {SameSitePolicy::unspecified, SameSitePolicy::none,
                                        SameSitePolicy::lax, SameSitePolicy::strict}) {
        HttpCookie cookie = start;
        cookie.sameSite = policy;
        if (seconds)
            cookie.expires = std::chrono::sys_seconds(std::chrono::seconds(*seconds));
        const HttpCookie kept = thereAndBack(cookie);
        if (policy == SameSitePolicy::unspecified)
            cookie.sameSite = SameSitePolicy::lax;
        if (policy == SameSitePolicy::none && !cookie.secure)
            cookie.sameSite = SameSitePolicy::unspecified;
        constexpr std::int64_t endOfYear9999 = 253'402'300'799;
        constexpr std::int64_t startOfYear1 = -62'135'596'800;
        if (seconds && (*seconds > endOfYear9999 || *seconds < startOfYear1))
            cookie.expires.reset();
        require(kept == cookie);
    }
}

void examineStorage(const http::SoupCookieStorage& storage, const Url& url) {
    const auto cookies = storage.cookies(url);
    require(cookies.has_value());
    const http::SoupUri uri = http::soupUri(url);
    for (const HttpCookie& cookie : *cookies) {
        examinePlain(cookie);
        require(!cookie.secure || url.scheme() == "https" || url.scheme() == "wss");
        const http::SoupCookiePointer made = http::toSoupCookie(cookie);
        require(soup_cookie_applies_to_uri(made.get(), uri.get()));
    }
}

/// Whether an attribute may be there twice. The library then leaks the memory of the first, which
/// would look like a leak of ours.
bool mayRepeat(const std::string& header) {
    std::string letters(header);
    std::ranges::transform(letters, letters.begin(), [](char c) { return g_ascii_tolower(c); });
    return std::ranges::any_of(std::array{"domain", "path"}, [&letters](const char* name) {
        return letters.find(name) != letters.rfind(name);
    });
}

std::optional<std::int64_t> numberIn(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::failOnComplaints();
    fuzz::FuzzInput input(data, size);
    const std::string_view line = input.takeLine();
    const auto blank = std::min(line.find(' '), line.size());
    auto url = Url::parse(line.substr(0, blank));
    const auto seconds = numberIn(line.substr(std::min(blank + 1, line.size())));
    if (!url || !http::soupUri(*url) || !g_uri_get_host(http::soupUri(*url).get()))
        url = Url::parse("https://service.example/api/start");
    const http::SoupUri uri = http::soupUri(*url);

    const http::SoupCookieStorage storage;
    for (int count = 0; count < 8 && !input.isEmpty(); ++count) {
        const std::string header(input.takeLine());
        if (mayRepeat(header))
            continue;
        const http::SoupCookiePointer cookie(soup_cookie_parse(header.c_str(), uri.get()));
        if (!cookie)
            continue;
        examineEngineCookie(cookie.get());
        examineAttributes(http::fromSoupCookie(cookie.get()), seconds);
        soup_cookie_jar_add_cookie(storage.jar(), soup_cookie_copy(cookie.get()));
    }
    examineStorage(storage, *url);
    return 0;
}
