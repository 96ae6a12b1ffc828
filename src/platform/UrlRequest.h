#pragma once

#include "base/Url.h"
#include "platform/RequestBody.h"

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelo::platform {

enum class CachePolicy {
    /// HTTP's own rules. A web view has a cache and follows the headers of the response. An
    /// HttpSession has no cache, so every request reaches the server.
    useProtocolCachePolicy = 0,
};

/// A request as it is sent. The headers keep their order and spelling; only headers that the
/// protocol itself requires are added.
struct UrlRequest {
    Url url;
    std::string method = "GET";
    std::vector<std::pair<std::string, std::string>> headers = {};
    std::optional<RequestBody> body = std::nullopt;
    /// HttpSession: for the whole request. EmbeddedWebView: without progress, see load().
    std::chrono::seconds timeout = std::chrono::seconds(60);
    CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy;
};

} // namespace kelo::platform
