#include "service/JsonReply.h"

#include "base/Failure.h"

namespace kelo::service {

std::optional<nlohmann::json> parsedJson(ByteView body) {
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
