#pragma once

#include <source_location>
#include <string_view>

namespace kelo {

/// Stops the process: something that the code takes for granted does not hold. Writes the rule and
/// the place to standard error. For defects of the program only, never for bad input.
[[noreturn]] void invariantBroken(std::string_view rule,
                                  std::source_location where = std::source_location::current());

} // namespace kelo
