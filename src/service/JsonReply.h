#pragma once

#include "base/Bytes.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>

/// Reading and writing the JSON that goes between us and the service.
namespace kelo::service {

/// An object or an array. Anything else, a bare top-level scalar included, fails with a
/// Failure of kind invalidJson.
nlohmann::json parseJson(ByteView body);

/// As parseJson(), with nothing instead of a failure.
std::optional<nlohmann::json> parsedJson(ByteView body);

/// The member, when the value is an object that has one of that very name and it is a string.
std::optional<std::string> stringMember(const nlohmann::json& value, std::string_view name);

/// Compact text. Fails with a Failure of kind invalidJson for a string that is not UTF-8.
std::string serializeJson(const nlohmann::json& value);

} // namespace kelo::service
