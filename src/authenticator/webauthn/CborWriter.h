#pragma once

#include "base/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelo::webauthn {

/// Writes CBOR items in the canonical form of CTAP2: every length is definite and as short as
/// possible. The caller sorts map keys: lower major type first, then shorter, then bytewise.
class CborWriter {
public:
    CborWriter& integer(std::int64_t value);
    CborWriter& text(std::string_view value);
    CborWriter& bytes(ByteView value);
    /// Starts a map. Write its pairs next: key, value, key, value.
    CborWriter& map(std::size_t pairs);

    const Bytes& result() const { return written; }

private:
    Bytes written;
};

} // namespace kelo::webauthn
