#pragma once

#include <map>
#include <string>
#include <string_view>

namespace kelo::demo {

using Values = std::map<std::string, std::string, std::less<>>;

/// Fills in a page: {{name}} becomes the value with HTML's special characters escaped, {{&name}}
/// the value as it is, for our own markup. Throws std::out_of_range for a name without a value.
std::string fillTemplate(std::string_view page, const Values& values);

} // namespace kelo::demo
