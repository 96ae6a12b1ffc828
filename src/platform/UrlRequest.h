#pragma once

#include "base/Bytes.h"
#include "base/SecretText.h"
#include "base/Url.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelo::platform {

/// The body of a request. It may hold a password, so every copy overwrites its memory when it is
/// destroyed.
class RequestBody {
public:
    RequestBody(Bytes bytes) : bytes(std::move(bytes)) {}
    RequestBody(const RequestBody&) = default;
    RequestBody(RequestBody&& other) noexcept : bytes(std::exchange(other.bytes, {})) {}
    RequestBody& operator=(RequestBody other) noexcept {
        std::swap(bytes, other.bytes);
        return *this;
    }
    ~RequestBody() { wipe(bytes.data(), bytes.size()); }

    const std::uint8_t* data() const { return bytes.data(); }
    std::size_t size() const { return bytes.size(); }
    auto begin() const { return bytes.begin(); }
    auto end() const { return bytes.end(); }

private:
    Bytes bytes;
};

enum class CachePolicy {
    /// HTTP's own rules. A web view has a cache and follows the headers of the response. An
    /// HttpSession has no cache, so every request reaches the server.
    useProtocolCachePolicy = 0,
};

/// A request as it is sent. The headers keep their order and spelling. A session adds only headers
/// that the protocol requires and those that name the program and what it can decode.
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
