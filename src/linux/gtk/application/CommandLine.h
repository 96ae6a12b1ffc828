#pragma once

#include "platform/Application.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelo::gtk {

/// Something that the command line can ask about the program and this desktop. It is printed, and
/// the program ends; no display is needed for it.
struct ReportOption {
    std::string name; ///< of the option, without dashes
    std::string description;
    std::function<std::string()> text;
};

/// What a start of the program was asked for.
struct CommandLine {
    /// To end with at once: a report or the help was printed, or there is nothing of that name.
    std::optional<int> exitStatus;
    /// Names of the program's actions; empty to open its window.
    std::vector<std::string> actions;
};

/// Reads the words that main() got, the program's own name first, and prints what they ask to be
/// told.
CommandLine readCommandLine(const std::vector<std::string>& words,
                            const std::vector<ReportOption>& reports,
                            const std::vector<platform::ProgramAction>& actions);

} // namespace kelo::gtk
