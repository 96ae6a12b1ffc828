#pragma once

#include "base/Url.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelo::command {

/// An option without a value.
struct Option {
    enum class Kind {
        action, ///< something that the running program does
        report, ///< something that is done at once and said, without a window
    };
    /// Lower-case letters and dashes; "--NAME" on the command line.
    std::string name;
    /// One short line for the user, without a full stop.
    std::string description;
    Kind kind = Kind::action;
};

/// The parsed command line.
struct CommandLine {
    /// Set if the command must exit at once, because it is wrong. The user was told.
    std::optional<int> exitStatus;
    /// Names of the requested actions. Without any, and without a page and a report, the main
    /// window is asked for.
    std::vector<std::string> actions;
    /// Names of the requested reports.
    std::vector<std::string> reports;
    /// The page to show in the main window.
    std::optional<Url> page;
};

/// The address, if it is one of the service's pages.
std::optional<Url> pageOfService(const std::string& address);

/// Parses the arguments of main(), the program's name included. For "--help" it prints the help and
/// ends the process. One address may be among the arguments, of a page of the service.
CommandLine readCommandLine(const std::vector<std::string>& words, std::span<const Option> options);

} // namespace kelo::command
