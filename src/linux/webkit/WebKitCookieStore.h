#pragma once

#include "linux/glib/GObjectPointer.h"
#include "platform/CookieStore.h"

#include <webkit/webkit.h>

namespace kelo::desktop {

/// The cookies of a network session, as its web views see them.
class WebKitCookieStore final : public platform::CookieStore {
public:
    explicit WebKitCookieStore(WebKitNetworkSession* session);

    platform::Task<void> setCookie(platform::HttpCookie cookie) override;
    platform::Task<std::vector<platform::HttpCookie>> getAllCookies() override;

private:
    GObjectPointer<WebKitCookieManager> manager;
};

} // namespace kelo::desktop
