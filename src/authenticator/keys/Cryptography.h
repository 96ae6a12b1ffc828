#pragma once

#include "base/Bytes.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace kelo::authenticator {

using Sha256Digest = std::array<std::uint8_t, 32>;

Sha256Digest sha256(ByteView data);
Sha256Digest sha256(std::string_view text);

/// From the system's cryptographic generator.
Bytes randomBytes(std::size_t count);
void fillRandom(std::uint8_t* memory, std::size_t count);

/// Throws the Failure for a failure inside the cryptographic library, which only a machine
/// out of memory or a broken installation causes. The operation is named for the journal.
[[noreturn]] void cryptographyFailed(std::string_view operation);

} // namespace kelo::authenticator
