#pragma once

#include "base/Bytes.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kelo::updater {

/// The publisher's public key (Ed25519), from the bundle.
using PublicKey = std::array<std::uint8_t, 32>;
using Signature = std::array<std::uint8_t, 64>;

/// Nothing if the text is not Base64 of exactly that many bytes. Blanks around it are ignored.
std::optional<PublicKey> parsePublicKey(std::string_view base64);
std::optional<Signature> parseSignature(std::string_view base64);

/// Whether the key's owner signed exactly these bytes (plain Ed25519).
bool verifies(const PublicKey& key, const Signature& signature, ByteView bytes);

/// The same for a file of exactly this size, read through the descriptor from its beginning. False
/// if the file is shorter, longer or cannot be read. Blocks; any thread.
bool verifiesFile(const PublicKey& key, const Signature& signature, int descriptor,
                  std::uint64_t size);

} // namespace kelo::updater
