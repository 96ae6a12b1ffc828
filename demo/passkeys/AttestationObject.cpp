#include "demo/passkeys/AttestationObject.h"

#include "demo/passkeys/PasskeyRefused.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace kelo::demo {
namespace {

/// Reads CBOR from the front. Lengths are taken in their shortest form only.
class Reader {
public:
    explicit Reader(ByteView bytes) : rest(bytes) {}

    std::uint8_t byte() { return take(1)[0]; }

    /// The name of a map's member, shorter than 24 bytes.
    void expectName(std::string_view name) {
        if (byte() != 0x60 + name.size() || !std::ranges::equal(take(name.size()), name))
            refuse();
    }

    ByteView shortText() {
        const std::uint8_t head = byte();
        if (head < 0x60 || head > 0x77)
            refuse();
        return take(head - 0x60u);
    }

    ByteView byteString() {
        const std::uint8_t head = byte();
        std::size_t size = 0;
        if (head == 0x58)
            size = byte();
        else if (head == 0x59)
            size = byte() * 256u + byte();
        const bool shortest = head == 0x58 ? size >= 24 : head == 0x59 && size >= 256;
        if (!shortest)
            refuse();
        return take(size);
    }

    void expectEnd() const {
        if (!rest.empty())
            refuse();
    }

    [[noreturn]] static void refuse() {
        throw PasskeyRefused("The attestation object is malformed");
    }

private:
    ByteView take(std::size_t count) {
        if (count > rest.size())
            refuse();
        const auto taken = rest.first(count);
        rest = rest.subspan(count);
        return taken;
    }

    ByteView rest;
};

} // namespace

ByteView authenticatorDataOf(ByteView attestationObject) {
    constexpr std::uint8_t mapOfThree = 0xa3;
    constexpr std::uint8_t emptyMap = 0xa0;
    Reader reader(attestationObject);
    if (reader.byte() != mapOfThree)
        Reader::refuse();
    reader.expectName("fmt");
    const bool none = std::ranges::equal(reader.shortText(), std::string_view("none"));
    reader.expectName("attStmt");
    // Other formats have a statement here; it need not be understood to be turned down.
    if (!none || reader.byte() != emptyMap)
        throw PasskeyRefused("The attestation format is not \"none\"");
    reader.expectName("authData");
    const auto data = reader.byteString();
    reader.expectEnd();
    return data;
}

} // namespace kelo::demo
