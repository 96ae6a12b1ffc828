#include "linux/http/CookiePrefix.h"

#include <gtest/gtest.h>

#include <memory>

namespace kelo::test {

using http::keepsPromiseOfName;
using platform::HttpCookie;

namespace {

HttpCookie cookie(std::string name) {
    HttpCookie made{std::move(name), "value", "example.com"};
    made.secure = true;
    return made;
}

struct HeadersDeleter {
    void operator()(SoupMessageHeaders* headers) const { soup_message_headers_unref(headers); }
};

/// What is left of one Set-Cookie field in a reply; empty if it was dropped.
std::string left(const std::string& field, const char* url = "https://www.example.com/page") {
    const std::unique_ptr<SoupMessageHeaders, HeadersDeleter> headers(
        soup_message_headers_new(SOUP_MESSAGE_HEADERS_RESPONSE));
    soup_message_headers_append(headers.get(), "Set-Cookie", field.c_str());
    http::dropFalseCookies(headers.get(), *Url::parse(url));
    const char* const kept = soup_message_headers_get_list(headers.get(), "Set-Cookie");
    return kept ? kept : "";
}

} // namespace

TEST(CookiePrefix, NameWithoutAPrefixPromisesNothing) {
    HttpCookie plain = cookie("session-token");
    plain.secure = false;
    plain.domain = ".example.com";
    plain.path = "/deep";
    for (const char* name : {"session-token", "_Secure-a", "__Secure", "__Host", "x__Host-a", ""}) {
        plain.name = name;
        EXPECT_TRUE(keepsPromiseOfName(plain)) << name;
    }
}

TEST(CookiePrefix, SecurePromisesTls) {
    for (const char* name : {"__Secure-a", "__secure-a", "__SECURE-A", "__Secure-"}) {
        HttpCookie made = cookie(name);
        made.domain = ".example.com";
        made.path = "/deep";
        EXPECT_TRUE(keepsPromiseOfName(made)) << name;
        made.secure = false;
        EXPECT_FALSE(keepsPromiseOfName(made)) << name;
    }
}

TEST(CookiePrefix, HostPromisesTlsAndOneHostAndAllPaths) {
    for (const char* name : {"__Host-a", "__host-a", "__HOST-A", "__Host-"}) {
        EXPECT_TRUE(keepsPromiseOfName(cookie(name))) << name;
        HttpCookie insecure = cookie(name);
        insecure.secure = false;
        EXPECT_FALSE(keepsPromiseOfName(insecure)) << name;
        HttpCookie wide = cookie(name);
        wide.domain = ".example.com";
        EXPECT_FALSE(keepsPromiseOfName(wide)) << name;
        HttpCookie deep = cookie(name);
        deep.path = "/deep";
        EXPECT_FALSE(keepsPromiseOfName(deep)) << name;
    }
}

TEST(CookiePrefix, ValueCannotStandInForAName) {
    HttpCookie nameless = cookie("");
    for (const char* value : {"__Secure-a=1", "__Host-a=1", "__host-a"}) {
        nameless.value = value;
        EXPECT_FALSE(keepsPromiseOfName(nameless)) << value;
    }
    HttpCookie named = cookie("a");
    named.value = "__Host-a=1";
    named.secure = false;
    EXPECT_TRUE(keepsPromiseOfName(named));
}

TEST(CookiePrefix, FieldThatKeepsItsPromiseStaysAsItIs) {
    for (const char* field :
         {"a=1", "__Secure-a=1; secure", "__Secure-a=1; Secure; Domain=example.com; Path=/deep",
          "__Host-a=1; Path=/; Secure; HttpOnly; SameSite=Lax",
          "__Host-a=1; Secure; Path=/; Domain="})
        EXPECT_EQ(left(field), field);
}

TEST(CookiePrefix, FieldThatDoesNotIsDropped) {
    for (const char* field :
         {"__Secure-a=1", "__sEcUrE-a=1; Domain=example.com", "__Host-a=1; Path=/",
          "__Host-a=1; Secure; Path=/; Domain=example.com", "__Host-a=1; Secure; Path=/deep",
          "__Host-a=1; Secure; Path=/; Path=/deep", "  __Secure-a=1", "=__Host-a=1; Secure; Path=/",
          "__Host-a"})
        EXPECT_EQ(left(field), "") << field;
}

TEST(CookiePrefix, PathMustBeNamedAlsoWhereItGoesWithoutSaying) {
    EXPECT_EQ(left("__Host-a=1; Secure", "https://www.example.com/"), "");
}

TEST(CookiePrefix, OtherFieldsOfTheReplyStayInTheirOrder) {
    const std::unique_ptr<SoupMessageHeaders, HeadersDeleter> headers(
        soup_message_headers_new(SOUP_MESSAGE_HEADERS_RESPONSE));
    for (const char* field : {"a=1", "__Host-b=2", "c=3; Path=/"})
        soup_message_headers_append(headers.get(), "Set-Cookie", field);
    soup_message_headers_append(headers.get(), "Location", "/next");
    http::dropFalseCookies(headers.get(), *Url::parse("https://example.com"));
    EXPECT_STREQ(soup_message_headers_get_list(headers.get(), "Set-Cookie"), "a=1, c=3; Path=/");
    EXPECT_STREQ(soup_message_headers_get_one(headers.get(), "Location"), "/next");
}

} // namespace kelo::test
