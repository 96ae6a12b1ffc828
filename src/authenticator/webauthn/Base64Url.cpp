#include "authenticator/webauthn/Base64Url.h"

#include <string_view>

namespace kelo::webauthn {

std::string base64Url(ByteView bytes) {
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::string text;
    text.reserve((bytes.size() * 4 + 2) / 3);
    unsigned pending = 0;
    int pendingBits = 0;
    for (const std::uint8_t byte : bytes) {
        pending = (pending << 8 | byte) & 0xFFFF;
        pendingBits += 8;
        while (pendingBits >= 6) {
            pendingBits -= 6;
            text += alphabet[pending >> pendingBits & 0x3F];
        }
    }
    if (pendingBits > 0)
        text += alphabet[pending << (6 - pendingBits) & 0x3F];
    return text;
}

} // namespace kelo::webauthn
