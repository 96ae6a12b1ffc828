#pragma once

#include <map>
#include <string>
#include <string_view>

namespace kelo::demo {

using Values = std::map<std::string, std::string, std::less<>>;

/// Puts values into a page: {{name}} with everything that means something in HTML escaped,
/// {{&name}} as it is, for markup of our own. A name without a value is a mistake in the page:
/// throws std::out_of_range.
std::string fillTemplate(std::string_view page, const Values& values);

} // namespace kelo::demo
