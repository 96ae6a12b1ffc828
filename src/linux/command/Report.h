#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace kelo::command {

/// What an option has to say, and whether it did what it was asked for.
struct Report {
    Report(std::string text) : text(std::move(text)) {} // NOLINT(google-explicit-constructor)
    Report(std::string text, bool succeeded) : text(std::move(text)), succeeded(succeeded) {}

    std::string text;
    bool succeeded = true;
};

/// What an option of kind "report" does: it looks at the program or at this desktop, or changes its
/// place there. Needs no display.
struct ReportOption {
    std::string name; ///< without dashes
    std::function<Report()> report;
};

/// Prints the reports of these names, those that failed on the error stream. Returns the exit
/// status.
int printReports(const std::vector<std::string>& names, const std::vector<ReportOption>& reports);

} // namespace kelo::command
