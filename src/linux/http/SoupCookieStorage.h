#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "platform/HttpSession.h"

#include <libsoup/soup.h>

namespace kelo::http {

/// The cookies of one session, in memory only. Accepts every cookie.
class SoupCookieStorage final : public platform::HttpCookieStorage {
public:
    SoupCookieStorage();

    /// Those that a request of our own for the URL would carry, HttpOnly ones included.
    std::optional<std::vector<platform::HttpCookie>> cookies(const Url& url) const override;

    SoupCookieJar* jar() const { return jar_.get(); }

private:
    gobject::GObjectPointer<SoupCookieJar> jar_;
};

} // namespace kelo::http
