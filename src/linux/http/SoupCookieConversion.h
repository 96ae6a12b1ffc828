#pragma once

#include "platform/HttpCookie.h"

#include <libsoup/soup.h>

#include <memory>

namespace kelo::http {

struct SoupCookieDeleter {
    void operator()(SoupCookie* cookie) const { soup_cookie_free(cookie); }
};
using SoupCookiePointer = std::unique_ptr<SoupCookie, SoupCookieDeleter>;

/// Every attribute goes along, in both directions.
///
/// One cannot: the library knows no cookie without a SameSite policy and keeps such a cookie as
/// "none", which it treats alike. Coming back, "none" is reported only of a secure cookie (no other
/// may carry it) and is "unspecified" otherwise.
SoupCookiePointer toSoupCookie(const platform::HttpCookie& cookie);
platform::HttpCookie fromSoupCookie(SoupCookie* cookie);

} // namespace kelo::http
