#pragma once

#include "linux/glib/GObjectPointer.h"
#include "platform/HttpSession.h"

#include <libsoup/soup.h>

namespace kelo::desktop {

/// The cookies of one session, in memory only. Accepts every cookie.
class SoupCookieStorage final : public platform::HttpCookieStorage {
public:
    SoupCookieStorage();

    /// Those that a request of our own for the URL would carry, HttpOnly ones included.
    std::optional<std::vector<platform::HttpCookie>>
    cookies(const platform::Url& url) const override;

    SoupCookieJar* jar() const { return jar_.get(); }

private:
    GObjectPointer<SoupCookieJar> jar_;
};

} // namespace kelo::desktop
