#pragma once

#include "base/Bytes.h"
#include "base/SecretText.h"

#include <cstddef>
#include <utility>

namespace kelo::authenticator {

/// A key in memory. Can be moved but not copied, never grows, and overwrites its memory on
/// destruction.
class SecretBytes {
public:
    SecretBytes() = default;
    explicit SecretBytes(std::size_t size) : bytes(size) {}
    /// Takes over the memory and leaves the vector empty.
    explicit SecretBytes(Bytes&& plain) : bytes(std::move(plain)) {}
    SecretBytes(SecretBytes&& other) noexcept : bytes(std::exchange(other.bytes, {})) {}
    SecretBytes& operator=(SecretBytes&& other) noexcept {
        std::swap(bytes, other.bytes);
        return *this;
    }
    SecretBytes(const SecretBytes&) = delete;
    SecretBytes& operator=(const SecretBytes&) = delete;
    ~SecretBytes() { wipe(bytes.data(), bytes.size()); }

    std::uint8_t* data() { return bytes.data(); }
    std::size_t size() const { return bytes.size(); }
    ByteView view() const { return bytes; }

private:
    Bytes bytes;
};

} // namespace kelo::authenticator
