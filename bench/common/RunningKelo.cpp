#include "common/RunningKelo.h"

#include "common/MomentFile.h"
#include "common/Programs.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

constexpr const char* logFile = "/tmp/kelo-debug.log";
constexpr std::chrono::seconds patience{60};
constexpr std::chrono::seconds settling{4};

std::vector<std::string> command(const fs::path& build, const std::vector<std::string>& arguments) {
    std::vector<std::string> words{build / "kelo"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

std::map<std::string, std::string> environment(const fs::path& folder,
                                               const std::map<std::string, std::string>& more) {
    auto variables = ownFolders(folder / "kelo");
    variables.insert(more.begin(), more.end());
    return variables;
}

} // namespace

RunningKelo::RunningKelo(const fs::path& build, const fs::path& folder,
                         const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& more)
    : logBegin(fs::exists(logFile) ? fs::file_size(logFile) : 0),
      process(command(build, arguments), environment(folder, more), folder / "kelo.log") {
    // Without a window nothing is armed, and nothing tells when all is done.
    const bool hasWindow = arguments.empty();
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (hasWindow && log().find("hotkey.start global=true") == std::string::npos) {
        if (std::chrono::steady_clock::now() >= deadline)
            throw std::runtime_error("Kelo's hotkey was not armed: " + log() + process.printed());
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    std::this_thread::sleep_for(settling);
    if (!process.isRunning())
        throw std::runtime_error("Kelo has ended: " + process.printed());
}

RunningKelo::~RunningKelo() {
    endWithTree(process);
}

std::string RunningKelo::log() const {
    return fileText(logFile).substr(logBegin);
}

} // namespace kelo::bench
