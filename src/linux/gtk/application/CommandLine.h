#pragma once

#include "base/Url.h"
#include "platform/Application.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelo::gtk {

/// What an option has to say, and whether it did what it was asked for.
struct Report {
    Report(std::string text) : text(std::move(text)) {} // NOLINT(google-explicit-constructor)
    Report(std::string text, bool succeeded) : text(std::move(text)), succeeded(succeeded) {}

    std::string text;
    bool succeeded = true;
};

/// A command line option that prints a report about the program or this desktop, or changes its
/// place there and says so. The program then exits. Needs no display.
struct ReportOption {
    std::string name; ///< without dashes
    std::string description;
    std::function<Report()> report;
};

/// The parsed command line.
struct CommandLine {
    /// Set if the program must exit at once: a report was printed, or the options are wrong.
    std::optional<int> exitStatus;
    /// Names of the requested actions. Empty means to open the main window.
    std::vector<std::string> actions;
    /// The page to show in the main window.
    std::optional<Url> page;
};

/// The address, if it is one of the service's pages.
std::optional<Url> pageOfService(const std::string& address);

/// Parses the arguments of main(), the program's name included, and prints the requested reports.
/// For "--help" it prints the help and ends the process. One address may be among the arguments, of
/// a page of the service.
CommandLine readCommandLine(const std::vector<std::string>& words,
                            const std::vector<ReportOption>& reports,
                            const std::vector<platform::ProgramAction>& actions);

} // namespace kelo::gtk
