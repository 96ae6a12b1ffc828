#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/http/SoupCookies.h"
#include "linux/http/TrustedAuthority.h"
#include "platform/HttpSession.h"

#include <libsoup/soup.h>

#include <memory>

namespace kelo::http {

/// HttpSession on libsoup. Only https. A certificate must be valid under the system's trust store
/// or under the given authority. To the caller's headers are added: Host, Connection,
/// Content-Length, User-Agent, Accept-Encoding (identity) and the cookies of the session's own
/// store.
class SoupHttpSession final : public platform::HttpSession {
public:
    enum class Cookies { none, inMemory };

    /// proxies: null for the desktop's.
    SoupHttpSession(Cookies cookies, std::shared_ptr<const TrustedAuthority> authority,
                    GProxyResolver* proxies = nullptr);
    ~SoupHttpSession() override;

    Task<platform::HttpReply> data(platform::UrlRequest request) override;
    Task<platform::HttpReply> data(Url url) override;
    const platform::HttpCookieStorage* cookieStorage() const override { return storage.get(); }

private:
    gobject::GObjectPointer<SoupSession> session;
    std::shared_ptr<const TrustedAuthority> authority;
    std::unique_ptr<SoupCookieStorage> storage;
};

/// A session with its own cookie store, in memory, that accepts every cookie.
std::unique_ptr<platform::HttpSession> makeEphemeralHttpSession();

/// A session without cookies, shared by the whole process.
std::unique_ptr<platform::HttpSession> makeSharedHttpSession();

} // namespace kelo::http
