#pragma once

#include <chrono>
#include <optional>
#include <string>

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

} // namespace kelo::platform
