#include "updater/tree/StartWatch.h"

#include <string_view>
#include <unistd.h>

/// Exits with status 0 when the start was confirmed, else runs the program of the tree before.
int main(int count, char** words) {
    using namespace kelo::updater;
    constexpr int fewest = 4;
    if (count < fewest)
        return 2;
    const bool relaunches = std::string_view(words[1]) == "relaunch";
    char** const program = words + fewest - 1;
    const WatchResult result = watchStart(
        words[2], kelo::posix::FileDescriptor(endedDescriptor),
        relaunches ? std::vector<std::string>(program, words + count) : std::vector<std::string>());
    if (result == WatchResult::takenBack)
        execv((std::string(words[2]) + "/bin/kelo").c_str(), program);
    return result == WatchResult::confirmed ? 0 : 1;
}
