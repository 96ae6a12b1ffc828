#include "linux/command/CommandLine.h"

#include "base/Translation.h"
#include "deployment/Deployment.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"

#include <glib.h>

#include <iostream>

namespace kelo::command {

namespace {

constexpr int wrongUsageStatus = 2;

int refuse(const std::string& sentence) {
    std::cerr << "kelo: " << sentence << "\n" << translated("Try \"%1\".", {"kelo --help"}) << "\n";
    return wrongUsageStatus;
}

/// The options as the toolkit's parser takes them, and which of them it found.
class Switches {
public:
    explicit Switches(std::span<const Option> options) : options(options), given(options.size()) {
        for (std::size_t index = 0; index < options.size(); ++index) {
            GOptionEntry entry{};
            entry.long_name = options[index].name.c_str();
            entry.description = options[index].description.c_str();
            entry.arg = G_OPTION_ARG_NONE;
            entry.arg_data = &given[index];
            entries.push_back(entry);
        }
        entries.push_back({});
    }

    /// Leaves the words that are no options. Returns what is wrong, if anything is.
    gobject::GErrorPointer read(std::vector<std::string>& words) {
        const std::string parameters = translated("[ADDRESS]");
        const gobject::GOptionContextPointer context(g_option_context_new(parameters.c_str()));
        g_option_context_add_main_entries(context.get(), entries.data(), nullptr);
        std::vector<char*> pointers;
        for (auto& word : words)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);
        char** start = pointers.data();
        int count = static_cast<int>(words.size());
        GError* error = nullptr;
        g_option_context_parse(context.get(), &count, &start, &error);
        if (!error)
            words = {start + 1, start + count};
        return gobject::GErrorPointer(error);
    }

    void addTo(CommandLine& found) const {
        for (std::size_t index = 0; index < options.size(); ++index)
            if (given[index])
                (options[index].kind == Option::Kind::report ? found.reports : found.actions)
                    .push_back(options[index].name);
    }

private:
    std::span<const Option> options;
    std::vector<gboolean> given; ///< the parser keeps pointers to the elements
    std::vector<GOptionEntry> entries;
};

} // namespace

std::optional<Url> pageOfService(const std::string& address) {
    const auto service = Url::parse(deployment::serviceOrigin);
    const auto page = Url::parse(address);
    return page && service && page->hasSameOrigin(*service) ? page : std::nullopt;
}

CommandLine readCommandLine(const std::vector<std::string>& words,
                            std::span<const Option> options) {
    CommandLine result;
    auto addresses = words;
    Switches switches(options);
    if (const auto error = switches.read(addresses)) {
        result.exitStatus = refuse(error->message);
        return result;
    }
    switches.addTo(result);
    if (!addresses.empty())
        result.page = pageOfService(addresses.front());
    if (addresses.size() > 1 || (!addresses.empty() && !result.page))
        result.exitStatus =
            refuse(translated("Kelo opens one page of %1. Open other addresses in your browser.",
                              {deployment::serviceOrigin}));
    return result;
}

} // namespace kelo::command
