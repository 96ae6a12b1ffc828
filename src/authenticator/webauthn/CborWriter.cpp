#include "authenticator/webauthn/CborWriter.h"

#include <cbor.h>

#include <array>

namespace kelo::webauthn {

namespace {

/// The head of an item: its type and its value or length, at most nine bytes.
template <typename Encode>
void appendHead(Bytes& written, std::uint64_t value, Encode encode) {
    std::array<unsigned char, 9> head;
    const std::size_t length = encode(value, head.data(), head.size());
    written.insert(written.end(), head.begin(), head.begin() + length);
}

} // namespace

CborWriter& CborWriter::integer(std::int64_t value) {
    if (value >= 0)
        appendHead(written, static_cast<std::uint64_t>(value), cbor_encode_uint);
    else // CBOR stores -1 - value.
        appendHead(written, ~static_cast<std::uint64_t>(value), cbor_encode_negint);
    return *this;
}

CborWriter& CborWriter::text(std::string_view value) {
    appendHead(written, value.size(), cbor_encode_string_start);
    written.insert(written.end(), value.begin(), value.end());
    return *this;
}

CborWriter& CborWriter::bytes(ByteView value) {
    appendHead(written, value.size(), cbor_encode_bytestring_start);
    written.insert(written.end(), value.begin(), value.end());
    return *this;
}

CborWriter& CborWriter::map(std::size_t pairs) {
    appendHead(written, pairs, cbor_encode_map_start);
    return *this;
}

} // namespace kelo::webauthn
