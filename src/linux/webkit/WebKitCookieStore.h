#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "platform/CookieStore.h"

#include <webkit/webkit.h>

namespace kelo::webkit {

/// The cookies of a network session, shared by all its web views. Cookies that lack what the prefix
/// of their name promises are not stored, and those that a page has planted are deleted whenever
/// the cookies are read.
class WebKitCookieStore final : public platform::CookieStore {
public:
    explicit WebKitCookieStore(WebKitNetworkSession* session);

    Task<void> setCookie(platform::HttpCookie cookie) override;
    Task<std::vector<platform::HttpCookie>> getAllCookies() override;

private:
    gobject::GObjectPointer<WebKitCookieManager> manager;
};

} // namespace kelo::webkit
