#include "linux/command/Report.h"

#include <algorithm>
#include <iostream>

namespace kelo::command {

int printReports(const std::vector<std::string>& names, const std::vector<ReportOption>& reports) {
    constexpr int failureStatus = 1;
    int status = 0;
    for (const auto& option : reports) {
        if (std::ranges::find(names, option.name) == names.end())
            continue;
        const Report report = option.report();
        (report.succeeded ? std::cout : std::cerr) << report.text << std::flush;
        status = report.succeeded ? status : failureStatus;
    }
    return status;
}

} // namespace kelo::command
