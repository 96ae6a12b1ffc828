#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kelo::demo {

/// The fields of an application/x-www-form-urlencoded text, decoded. Nothing when it is malformed,
/// not UTF-8, or has a name twice: which of the two a check looks at must not be a matter of taste.
std::optional<std::map<std::string, std::string>> parseForm(std::string_view text);

} // namespace kelo::demo
