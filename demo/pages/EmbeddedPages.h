#pragma once

#include <string_view>

namespace kelo::demo {

/// A file of demo/pages, compiled in. Throws std::out_of_range for a name that is not there.
std::string_view embeddedPage(std::string_view name);

} // namespace kelo::demo
