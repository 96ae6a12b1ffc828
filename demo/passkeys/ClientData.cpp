#include "demo/passkeys/ClientData.h"

#include "base/Base64.h"

#include <nlohmann/json.hpp>

#include <array>
#include <utility>

namespace kelo::demo {
namespace {

/// The one way in which WebAuthn writes a text into client data.
std::string inQuotes(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result = "\"";
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\')
            result += {'\\', character};
        else if (code < 0x20)
            result += std::string("\\u00") + digits[code >> 4] + digits[code & 0x0f];
        else
            result += character;
    }
    return result + "\"";
}

std::optional<std::string> text(const nlohmann::json& object, const char* member) {
    const auto found = object.find(member);
    if (found == object.end() || !found->is_string())
        return std::nullopt;
    return found->get<std::string>();
}

} // namespace

std::optional<ClientData> parseClientData(ByteView bytes) {
    const auto json = nlohmann::json::parse(bytes.begin(), bytes.end(), nullptr, false);
    if (!json.is_object())
        return std::nullopt;
    auto type = text(json, "type");
    const auto challenge = text(json, "challenge");
    auto origin = text(json, "origin");
    auto decoded = base64URLDecodeStrict(challenge.value_or("="));
    if (!type || !decoded || !origin)
        return std::nullopt;
    const auto crossOrigin = json.find("crossOrigin");
    const bool crosses = crossOrigin != json.end() && *crossOrigin != false;
    return ClientData{std::move(*type), std::move(*decoded), std::move(*origin), crosses};
}

bool isClientDataFor(ByteView bytes, std::string_view type, ByteView challenge,
                     std::string_view origin) {
    const std::string expected = "{\"type\":" + inQuotes(type) +
                                 ",\"challenge\":" + inQuotes(base64URLEncode(challenge)) +
                                 ",\"origin\":" + inQuotes(origin) + ",\"crossOrigin\":false";
    const std::string given = textOf(bytes);
    if (!given.starts_with(expected) || given.size() == expected.size())
        return false;
    const char next = given[expected.size()];
    return next == '}' || next == ',';
}

} // namespace kelo::demo
