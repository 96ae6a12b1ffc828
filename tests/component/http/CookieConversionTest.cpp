#include "linux/http/SoupCookies.h"

#include <gtest/gtest.h>

namespace kelo::test {

using platform::HttpCookie;
using platform::SameSitePolicy;

namespace {

HttpCookie cookie() {
    HttpCookie made{"__Secure-session-token", "v%20w", "localhost"};
    made.path = "/api";
    made.secure = true;
    return made;
}

HttpCookie thereAndBack(const HttpCookie& cookie) {
    return http::fromSoupCookie(http::toSoupCookie(cookie).get());
}

} // namespace

TEST(CookieConversion, KeepsEveryAttributeOnTheWayThereAndBack) {
    for (const bool httpOnly : {false, true})
        for (const SameSitePolicy policy :
             {SameSitePolicy::lax, SameSitePolicy::strict, SameSitePolicy::none}) {
            HttpCookie whole = cookie();
            whole.httpOnly = httpOnly;
            whole.sameSite = policy;
            whole.expires = std::chrono::sys_seconds(std::chrono::seconds(4'102'444'800));
            EXPECT_EQ(thereAndBack(whole), whole);
            whole.expires.reset();
            EXPECT_EQ(thereAndBack(whole), whole);
        }
}

TEST(CookieConversion, AnUnspecifiedPolicyIsLax) {
    for (const bool secure : {false, true}) {
        HttpCookie plain = cookie();
        plain.secure = secure;
        plain.sameSite = SameSitePolicy::unspecified;
        EXPECT_EQ(thereAndBack(plain).sameSite, SameSitePolicy::lax);
    }
}

// No browser keeps such a cookie, and libsoup 3.6 does not either.
TEST(CookieConversion, WithoutSecureNoPolicyIsAnUnspecifiedOne) {
    HttpCookie plain = cookie();
    plain.secure = false;
    plain.sameSite = SameSitePolicy::none;
    EXPECT_EQ(thereAndBack(plain).sameSite, SameSitePolicy::unspecified);
}

TEST(CookieConversion, AYearThatTheLibraryDoesNotKnowEndsWithTheSession) {
    HttpCookie late = cookie();
    late.sameSite = SameSitePolicy::none;
    late.expires = std::chrono::sys_seconds(std::chrono::hours(24) * 365 * 10'000);
    EXPECT_EQ(thereAndBack(late).expires, std::nullopt);
}

} // namespace kelo::test
