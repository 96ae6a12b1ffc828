#pragma once

#include "base/Url.h"
#include "platform/RequestBody.h"

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelo::platform {

enum class CachePolicy { useProtocolCachePolicy = 0 };

/// A request as it goes on the wire. Headers are sent in this order, under these names, and besides
/// them only what the protocol itself needs.
struct UrlRequest {
    Url url;
    std::string method = "GET";
    std::vector<std::pair<std::string, std::string>> headers = {};
    std::optional<RequestBody> body = std::nullopt;
    std::chrono::seconds timeout = std::chrono::seconds(60);
    CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy;
};

} // namespace kelo::platform
