#include "service/JsonReply.h"

#include "base/Failure.h"

namespace kelo::service {

namespace {

/// Looks at the text alone, so that not even the part above the limit is built.
bool isNestedTooDeeply(ByteView body) {
    int depth = 0;
    bool inText = false;
    bool escaped = false;
    for (const std::uint8_t byte : body) {
        if (escaped)
            escaped = false;
        else if (inText && byte == '\\')
            escaped = true;
        else if (byte == '"')
            inText = !inText;
        else if (!inText && (byte == '[' || byte == '{') && ++depth > deepestJson)
            return true;
        else if (!inText && (byte == ']' || byte == '}'))
            --depth;
    }
    return false;
}

} // namespace

std::optional<nlohmann::json> parsedJson(ByteView body) {
    if (isNestedTooDeeply(body))
        return std::nullopt;
    auto value = nlohmann::json::parse(body.begin(), body.end(), nullptr, false);
    if (!value.is_structured())
        return std::nullopt;
    return value;
}

nlohmann::json parseJson(ByteView body) {
    auto value = parsedJson(body);
    if (!value)
        throw Failure(FailureKind::invalidJson,
                      "The service sent a reply that is not valid JSON. Please try again later.");
    return *std::move(value);
}

std::optional<std::string> stringMember(const nlohmann::json& value, std::string_view name) {
    if (!value.is_object())
        return std::nullopt;
    const auto member = value.find(name);
    if (member == value.end() || !member->is_string())
        return std::nullopt;
    return member->get<std::string>();
}

std::string serializeJson(const nlohmann::json& value) {
    try {
        return value.dump();
    } catch (const nlohmann::json::exception& error) {
        throw Failure(
            FailureKind::invalidJson,
            "The text you entered has characters that cannot be sent. Please type it again.",
            error.what());
    }
}

} // namespace kelo::service
