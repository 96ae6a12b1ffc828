#pragma once

#include "base/Bytes.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>

/// Reads and writes the JSON that is exchanged with the service.
namespace kelo::service {

/// How many arrays and objects may lie in one another. What the service sends has a handful. Values
/// are copied, compared and written by functions that call themselves for each level, so a reply
/// with very many of them would use up the stack.
inline constexpr int deepestJson = 64;

/// Parses an object or an array. Anything else, including a top-level scalar and JSON that is
/// nested too deeply, throws a Failure of kind invalidJson.
nlohmann::json parseJson(ByteView body);

/// Like parseJson(), but returns empty instead of throwing.
std::optional<nlohmann::json> parsedJson(ByteView body);

/// The member of that exact name, if the value is an object and the member is a string.
std::optional<std::string> stringMember(const nlohmann::json& value, std::string_view name);

/// Compact JSON text. Throws a Failure of kind invalidJson for a string that is not UTF-8.
std::string serializeJson(const nlohmann::json& value);

/// Appends the text as a JSON string, with its quotation marks. Never moves what `json` holds if it
/// has room for longestQuoted() more bytes: a secret then leaves no copy in freed memory. Throws
/// like serializeJson().
void appendQuoted(Bytes& json, std::string_view text);

/// The most bytes that appendQuoted() appends.
std::size_t longestQuoted(std::string_view text);

} // namespace kelo::service
