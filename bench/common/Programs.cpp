#include "common/Programs.h"

#include "testing/rig/ProcessTree.h"

#include <chrono>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds patience{60};
constexpr std::chrono::milliseconds lookEvery{20};

bool exists(pid_t process) {
    struct stat status {};
    return stat(("/proc/" + std::to_string(process)).c_str(), &status) == 0;
}

} // namespace

fs::path miniBrowser() {
    for (const auto& entry : fs::directory_iterator("/usr/lib")) {
        fs::path candidate = entry.path() / "webkitgtk-6.0" / "MiniBrowser";
        std::error_code unreadable;
        if (fs::exists(candidate, unreadable))
            return candidate;
    }
    throw std::runtime_error("WebKitGTK's MiniBrowser is not installed.");
}

std::map<std::string, std::string> ownFolders(const fs::path& folder) {
    fs::create_directories(folder / "data");
    fs::create_directories(folder / "cache");
    return {{"XDG_DATA_HOME", folder / "data"}, {"XDG_CACHE_HOME", folder / "cache"}};
}

void endWithTree(rig::ChildProcess& process) {
    const auto tree = rig::processTree(process.identifier());
    process.end();
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (const pid_t member : tree) {
        while (exists(member) && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(lookEvery);
    }
}

} // namespace kelo::bench
