#include "common/Programs.h"

#include "testing/rig/ProcessTree.h"
#include "testing/screen/Windows.h"

#include <chrono>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

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

std::optional<fs::path> installedProgram(const std::string& name) {
    for (const char* folder : {"/usr/local/bin", "/usr/bin", "/usr/games"})
        if (::access((fs::path(folder) / name).c_str(), X_OK) == 0)
            return fs::path(folder) / name;
    return std::nullopt;
}

std::map<std::string, std::string> ownFolders(const fs::path& folder) {
    std::map<std::string, std::string> variables;
    for (const auto& [variable, name] :
         {std::pair("XDG_DATA_HOME", "data"), std::pair("XDG_CACHE_HOME", "cache"),
          std::pair("XDG_CONFIG_HOME", "config"), std::pair("XDG_STATE_HOME", "state")}) {
        fs::create_directories(folder / name);
        variables[variable] = folder / name;
    }
    return variables;
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

void awaitWindowManager() {
    const screen::XConnection connection;
    const screen::Windows windows(connection);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!windows.hasManager()) {
        if (std::chrono::steady_clock::now() >= deadline)
            throw std::runtime_error("No window manager has started.");
        std::this_thread::sleep_for(lookEvery);
    }
}

} // namespace kelo::bench
