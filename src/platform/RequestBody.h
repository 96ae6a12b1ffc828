#pragma once

#include "base/Bytes.h"
#include "base/SecretText.h"

#include <cstddef>
#include <utility>

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

} // namespace kelo::platform
