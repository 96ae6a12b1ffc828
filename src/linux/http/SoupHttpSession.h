#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/http/SoupCookieStorage.h"
#include "linux/http/TrustedAuthority.h"
#include "platform/HttpSession.h"

#include <libsoup/soup.h>

#include <memory>

namespace kelo::http {

/// HttpSession on libsoup. Only https; certificates hold against the system's trust store or the
/// given authority and nothing else. Requests carry neither a user agent nor accepted encodings.
class SoupHttpSession final : public platform::HttpSession {
public:
    enum class Cookies { none, inMemory };

    SoupHttpSession(Cookies cookies, std::shared_ptr<const TrustedAuthority> authority);
    ~SoupHttpSession() override;

    Task<platform::HttpReply> data(platform::UrlRequest request) override;
    Task<platform::HttpReply> data(Url url) override;
    const platform::HttpCookieStorage* cookieStorage() const override { return storage.get(); }

private:
    gobject::GObjectPointer<SoupSession> session;
    std::shared_ptr<const TrustedAuthority> authority;
    std::unique_ptr<SoupCookieStorage> storage;
};

/// A session with a cookie store of its own, in memory, that accepts every cookie.
std::unique_ptr<platform::HttpSession> makeEphemeralHttpSession();

/// A session that keeps no cookies, for the whole process to share.
std::unique_ptr<platform::HttpSession> makeSharedHttpSession();

} // namespace kelo::http
