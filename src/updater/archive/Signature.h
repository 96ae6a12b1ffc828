#pragma once

#include "base/Bytes.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kelo::updater {

/// The publisher's public key (Ed25519), as the bundle names it.
using PublicKey = std::array<std::uint8_t, 32>;
using Signature = std::array<std::uint8_t, 64>;

/// Nothing when the text is not Base64 of exactly that many bytes. Blanks around it are no matter.
std::optional<PublicKey> parsePublicKey(std::string_view base64);
std::optional<Signature> parseSignature(std::string_view base64);

/// Whether the key's owner signed exactly these bytes (plain Ed25519).
bool verifies(const PublicKey& key, const Signature& signature, ByteView bytes);

/// The same for the first size bytes of a file, read through the descriptor from its beginning. A
/// file that is shorter, longer or cannot be read does not verify. Blocks; any thread.
bool verifiesFile(const PublicKey& key, const Signature& signature, int descriptor,
                  std::uint64_t size);

} // namespace kelo::updater
