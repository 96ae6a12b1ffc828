#pragma once

#include "linux/command/CommandLine.h"

#include <vector>

namespace kelo::command {

inline constexpr const char* quitOption = "quit";
inline constexpr const char* versionOption = "version";

/// All options of the program, in the order of its help, described in the user's language. Here and
/// not with what they do, because the help is printed without the program being loaded.
std::vector<Option> programOptions();

/// What --version prints, without a line's end: "Kelo 1.4.2 (57)".
std::string versionLine();

} // namespace kelo::command
