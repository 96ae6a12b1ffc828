#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kelo::demo {

/// The fields of an application/x-www-form-urlencoded text, decoded. Empty if it is malformed, not
/// UTF-8, or has a name twice, because two checks might look at different ones.
std::optional<std::map<std::string, std::string>> parseForm(std::string_view text);

} // namespace kelo::demo
