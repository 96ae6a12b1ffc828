#pragma once

#include "base/async/Task.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace kelo::platform {

enum class SameSitePolicy { unspecified, none, lax, strict };

/// One HTTP cookie, with every attribute that must survive a copy from one store to another.
struct HttpCookie {
    std::string name;
    std::string value;
    /// "host" for a host-only cookie, ".host" for a cookie that sub-domains receive as well.
    std::string domain;
    std::string path = "/";
    /// Empty for a session cookie. Whole seconds.
    std::optional<std::chrono::sys_seconds> expires = std::nullopt;
    bool secure = false;
    bool httpOnly = false;
    SameSitePolicy sameSite = SameSitePolicy::unspecified;

    friend bool operator==(const HttpCookie&, const HttpCookie&) = default;
};

/// The cookies of a web view's data store. Neither operation fails: a cookie that the store refuses
/// is dropped, and a store that cannot be read counts as empty.
class CookieStore {
public:
    virtual ~CookieStore() = default;
    /// Completes when the cookie is in the store.
    virtual Task<void> setCookie(HttpCookie cookie) = 0;
    /// All cookies of all domains, in the store's own order.
    virtual Task<std::vector<HttpCookie>> getAllCookies() = 0;
};

} // namespace kelo::platform
