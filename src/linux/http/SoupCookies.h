#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "platform/HttpSession.h"

#include <libsoup/soup.h>

#include <memory>

namespace kelo::http {

struct SoupCookieDeleter {
    void operator()(SoupCookie* cookie) const { soup_cookie_free(cookie); }
};
using SoupCookiePointer = std::unique_ptr<SoupCookie, SoupCookieDeleter>;

/// Both conversions keep every attribute, with one exception: libsoup has no cookie without a
/// SameSite policy. "unspecified" becomes "lax", which is what browsers take it for. In the other
/// direction "none" stays "none" for a secure cookie and becomes "unspecified" otherwise: no other
/// may carry it, and libsoup 3.2 also reads it where a reply names no policy.
SoupCookiePointer toSoupCookie(const platform::HttpCookie& cookie);
platform::HttpCookie fromSoupCookie(SoupCookie* cookie);

/// The cookies of one session, in memory only. Accepts every cookie: sendRequest() has dropped
/// those that are false.
class SoupCookieStorage final : public platform::HttpCookieStorage {
public:
    SoupCookieStorage();

    /// The cookies that a request of this session for the URL would carry, HttpOnly ones included.
    std::optional<std::vector<platform::HttpCookie>> cookies(const Url& url) const override;

    SoupCookieJar* jar() const { return jar_.get(); }

private:
    gobject::GObjectPointer<SoupCookieJar> jar_;
};

} // namespace kelo::http
