#pragma once

#include "platform/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelo::authenticator {

/// Appends CBOR items in the canonical form of CTAP2: definite lengths in their shortest form. The
/// order of map keys is the caller's: lower major type first, then shorter, then bytewise.
class CborWriter {
public:
    CborWriter& integer(std::int64_t value);
    CborWriter& text(std::string_view value);
    CborWriter& bytes(platform::ByteView value);
    /// The pairs follow as items: key, value, key, value.
    CborWriter& map(std::size_t pairs);

    const platform::Bytes& result() const { return written; }

private:
    platform::Bytes written;
};

} // namespace kelo::authenticator
