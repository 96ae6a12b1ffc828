#include "common/Wakings.h"

#include "common/MomentFile.h"

#include <filesystem>
#include <sstream>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

std::string firstLine(const fs::path& file) {
    const std::string text = fileText(file);
    return text.substr(0, text.find('\n'));
}

ThreadCounts countsOf(const fs::path& thread) {
    ThreadCounts counts;
    counts.name = firstLine(thread / "comm");
    std::istringstream status(fileText(thread / "status"));
    for (std::string word; status >> word;) {
        if (word == "voluntary_ctxt_switches:")
            status >> counts.voluntary;
        if (word == "nonvoluntary_ctxt_switches:")
            status >> counts.involuntary;
    }
    // Time on a processor, time waiting for one, and how often it was given one.
    std::istringstream(fileText(thread / "schedstat")) >> counts.nanoseconds;
    return counts;
}

} // namespace

ThreadCounts ProcessCounts::sum() const {
    ThreadCounts all{program};
    for (const auto& [identifier, thread] : threads) {
        all.voluntary += thread.voluntary;
        all.involuntary += thread.involuntary;
        all.nanoseconds += thread.nanoseconds;
    }
    return all;
}

Wakings wakingsOf(const std::vector<pid_t>& processes) {
    Wakings found;
    for (const pid_t process : processes) {
        const fs::path folder = fs::path("/proc") / std::to_string(process);
        ProcessCounts counts{firstLine(folder / "comm"), {}};
        std::error_code gone;
        for (const auto& thread : fs::directory_iterator(folder / "task", gone))
            counts.threads[static_cast<pid_t>(std::stol(thread.path().filename()))] =
                countsOf(thread.path());
        if (!counts.threads.empty())
            found[process] = std::move(counts);
    }
    return found;
}

Wakings wakingsBetween(const Wakings& before, const Wakings& after) {
    Wakings between = after;
    for (auto& [process, counts] : between) {
        const auto former = before.find(process);
        if (former == before.end())
            continue;
        for (auto& [identifier, thread] : counts.threads) {
            const auto known = former->second.threads.find(identifier);
            if (known == former->second.threads.end())
                continue;
            thread.voluntary -= known->second.voluntary;
            thread.involuntary -= known->second.involuntary;
            thread.nanoseconds -= known->second.nanoseconds;
        }
    }
    return between;
}

} // namespace kelo::bench
