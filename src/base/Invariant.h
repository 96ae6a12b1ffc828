#pragma once

#include <source_location>
#include <string_view>

namespace kelo {

/// Aborts the process because an invariant of the code is broken. Writes the rule and the source
/// location to standard error. For bugs in the program only, never for bad input.
[[noreturn]] void invariantBroken(std::string_view rule,
                                  std::source_location where = std::source_location::current());

} // namespace kelo
