#include "linux/gtk/application/CommandLine.h"

#include "base/Translation.h"
#include "deployment/Deployment.h"

#include <glibmm/error.h>
#include <glibmm/optioncontext.h>
#include <glibmm/optionentry.h>
#include <glibmm/optiongroup.h>

#include <deque>
#include <iostream>
#include <utility>

namespace kelo::gtk {

namespace {

constexpr int failureStatus = 1;
constexpr int wrongUsageStatus = 2;

/// Options without a value.
class Switches {
public:
    bool& add(const std::string& name, const std::string& description) {
        Glib::OptionEntry entry;
        entry.set_long_name(name);
        entry.set_description(description);
        bool& given = values.emplace_back(false);
        group.add_entry(entry, given);
        return given;
    }

    /// Returns the words that are no options. Throws Glib::Error. Prints the help and ends the
    /// process if it was requested.
    std::vector<std::string> read(std::vector<std::string> words) {
        Glib::OptionContext context(translated("[ADDRESS]"));
        context.set_main_group(group);
        std::vector<char*> pointers;
        for (auto& word : words)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);
        int count = static_cast<int>(words.size());
        char** start = pointers.data();
        context.parse(count, start);
        return {start + 1, start + count};
    }

private:
    Glib::OptionGroup group{"kelo", ""};
    std::deque<bool> values; ///< a deque, because the group keeps pointers to the elements
};

int refuse(const std::string& sentence) {
    std::cerr << "kelo: " << sentence << "\n" << translated("Try \"%1\".", {"kelo --help"}) << "\n";
    return wrongUsageStatus;
}

} // namespace

std::optional<Url> pageOfService(const std::string& address) {
    const auto service = Url::parse(deployment::serviceOrigin);
    const auto page = Url::parse(address);
    return page && service && page->hasSameOrigin(*service) ? page : std::nullopt;
}

CommandLine readCommandLine(const std::vector<std::string>& words,
                            const std::vector<ReportOption>& reports,
                            const std::vector<platform::ProgramAction>& actions) {
    Switches switches;
    std::vector<std::pair<const bool*, const ReportOption*>> reportSwitches;
    std::vector<std::pair<const bool*, const platform::ProgramAction*>> actionSwitches;
    for (const auto& action : actions)
        actionSwitches.emplace_back(&switches.add(action.name, action.description), &action);
    for (const auto& report : reports)
        reportSwitches.emplace_back(&switches.add(report.name, report.description), &report);

    CommandLine result;
    std::vector<std::string> addresses;
    try {
        addresses = switches.read(words);
    } catch (const Glib::Error& error) {
        result.exitStatus = refuse(error.what());
        return result;
    }
    if (!addresses.empty())
        result.page = pageOfService(addresses.front());
    if (addresses.size() > 1 || (!addresses.empty() && !result.page)) {
        result.exitStatus =
            refuse(translated("Kelo opens one page of %1. Open other addresses in your browser.",
                              {deployment::serviceOrigin}));
        return result;
    }
    for (const auto& [given, option] : reportSwitches)
        if (*given) {
            const Report report = option->report();
            (report.succeeded ? std::cout : std::cerr) << report.text << std::flush;
            result.exitStatus = report.succeeded ? result.exitStatus.value_or(0) : failureStatus;
        }
    for (const auto& [given, action] : actionSwitches)
        if (*given)
            result.actions.push_back(action->name);
    return result;
}

} // namespace kelo::gtk
