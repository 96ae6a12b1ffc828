#include "service/JsonReply.h"

#include "base/Failure.h"
#include "base/JsonString.h"
#include "base/Translation.h"
#include "base/Utf8.h"

#include <utility>

namespace kelo::service {

namespace {

Failure unsendableText(std::string cause) {
    return Failure(
        FailureKind::invalidJson,
        translated(
            "The text you entered has characters that cannot be sent. Please type it again."),
        std::move(cause));
}

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
        throw Failure(
            FailureKind::invalidJson,
            translated("The service sent a reply that is not valid JSON. Please try again later."));
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
        throw unsendableText(error.what());
    }
}

std::size_t longestQuoted(std::string_view text) {
    constexpr std::size_t longestEscape = 6;
    return 2 + longestEscape * text.size();
}

void appendQuoted(Bytes& json, std::string_view text) {
    if (!isWellFormedUtf8(text))
        throw unsendableText("the text is not UTF-8");
    appendJsonString(json, text);
}

} // namespace kelo::service
