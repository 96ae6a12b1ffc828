#pragma once

#include "base/async/Task.h"
#include "platform/HttpCookie.h"

#include <vector>

namespace kelo::platform {

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
