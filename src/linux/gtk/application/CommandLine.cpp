#include "linux/gtk/application/CommandLine.h"

#include <glibmm/error.h>
#include <glibmm/optioncontext.h>
#include <glibmm/optionentry.h>
#include <glibmm/optiongroup.h>

#include <deque>
#include <iostream>
#include <utility>

namespace kelo::gtk {

namespace {

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

    /// Throws Glib::Error. Prints the help and ends the process if it was requested.
    void read(std::vector<std::string> words) {
        Glib::OptionContext context;
        context.set_main_group(group);
        std::vector<char*> pointers;
        for (auto& word : words)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);
        int count = static_cast<int>(words.size());
        char** start = pointers.data();
        context.parse(count, start);
        if (count > 1)
            throw Glib::OptionError(Glib::OptionError::UNKNOWN_OPTION,
                                    std::string("Unexpected argument: ") + start[1]);
    }

private:
    Glib::OptionGroup group{"kelo", ""};
    std::deque<bool> values; ///< a deque, because the group keeps pointers to the elements
};

} // namespace

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
    try {
        switches.read(words);
    } catch (const Glib::Error& error) {
        std::cerr << "kelo: " << error.what() << "\nTry \"kelo --help\".\n";
        result.exitStatus = wrongUsageStatus;
        return result;
    }
    for (const auto& [given, report] : reportSwitches)
        if (*given) {
            std::cout << report->text() << std::flush;
            result.exitStatus = 0;
        }
    for (const auto& [given, action] : actionSwitches)
        if (*given)
            result.actions.push_back(action->name);
    return result;
}

} // namespace kelo::gtk
