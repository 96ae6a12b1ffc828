#include "authenticator/webauthn/ClientData.h"

#include "base/Base64.h"

#include <string_view>

namespace kelo::webauthn {

namespace {

/// CCDToString of the standard. A backslash escapes quotation marks and backslashes. Characters
/// below U+0020 become \u and four lower-case digits. Everything else is copied.
std::string quoted(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result = "\"";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            result += '\\';
            result += character;
        } else if (byte < 0x20) {
            result += "\\u00";
            result += digits[byte >> 4];
            result += digits[byte & 0xF];
        } else {
            result += character;
        }
    }
    result += '"';
    return result;
}

} // namespace

std::string clientDataJson(const ClientData& clientData) {
    std::string json = "{\"type\":" + quoted(clientData.type);
    json += ",\"challenge\":" + quoted(base64URLEncode(clientData.challenge));
    json += ",\"origin\":" + quoted(clientData.origin);
    json += ",\"crossOrigin\":";
    json += clientData.crossOrigin ? "true" : "false";
    if (clientData.topOrigin)
        json += ",\"topOrigin\":" + quoted(*clientData.topOrigin);
    if (!clientData.furtherMembers.empty())
        json += "," + clientData.furtherMembers;
    json += "}";
    return json;
}

} // namespace kelo::webauthn
