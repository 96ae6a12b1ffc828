#pragma once

#include "base/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelo::webauthn {

/// Appends CBOR items in the canonical form of CTAP2: definite lengths in their shortest form. The
/// order of map keys is the caller's: lower major type first, then shorter, then bytewise.
class CborWriter {
public:
    CborWriter& integer(std::int64_t value);
    CborWriter& text(std::string_view value);
    CborWriter& bytes(ByteView value);
    /// The pairs follow as items: key, value, key, value.
    CborWriter& map(std::size_t pairs);

    const Bytes& result() const { return written; }

private:
    Bytes written;
};

} // namespace kelo::webauthn
