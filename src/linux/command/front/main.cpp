#include "base/Translation.h"
#include "bundle/ProgramPlace.h"
#include "linux/command/ProgramOptions.h"
#include "linux/command/RunningProgram.h"
#include "linux/locale/UserLocale.h"
#include "updater/tree/CutOffExchange.h"

#include <unistd.h>

#include <iostream>

namespace {

/// Runs the program in the place of this process. Returns only if that failed.
int becomeProgram(const std::filesystem::path& prefix, char** words) {
    kelo::updater::undoExchangeThatWasCutOff(prefix);
    const std::string program = kelo::bundle::programBehind(prefix);
    execv(program.c_str(), words);
    std::cerr << "kelo: "
              << kelo::translated("Kelo does not start, because %1 cannot be run. Install Kelo "
                                  "again.",
                                  {program})
              << "\n";
    return 1;
}

} // namespace

/// kelo: hands over to the program that is already running, answers what needs no program, and
/// otherwise becomes the program. Loading that one's libraries takes twenty times as long as all of
/// this.
int main(int count, char** words) {
    using namespace kelo;
    const auto prefix = bundle::installationPrefix(bundle::programPath());
    locale::followUserLocale();
    locale::findTranslations(prefix);
    const auto asked = command::readCommandLine({words, words + count}, command::programOptions());
    if (asked.exitStatus)
        return *asked.exitStatus;
    if (asked.reports == std::vector<std::string>{command::versionOption}) {
        std::cout << command::versionLine() << "\n";
        return 0;
    }
    if (asked.reports.empty() && command::askRunningProgram(asked))
        return 0;
    return becomeProgram(prefix, words);
}
