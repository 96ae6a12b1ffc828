#include "testing/rig/KeloProcess.h"

#include <cstdlib>

namespace kelo::rig {

namespace {

namespace fs = std::filesystem;

/// Where the kernel gave us no mount namespace, PAM's own folder is the machine's. The helper then
/// takes the service "kelo" that lies beside it, so Kelo runs from a folder of copies.
fs::path programToRun(const fs::path& build, const fs::path& data) {
    const char* services = std::getenv("KELO_PRIVATE_DESKTOP_PAM_SERVICES");
    if (!services)
        return build / "kelo";
    const fs::path folder = data / "programs";
    if (fs::exists(folder))
        return folder / "kelo";
    fs::create_directories(folder / "pam.d");
    fs::copy_file(build / "kelo", folder / "kelo");
    fs::copy_file(build / "kelo-verify-user", folder / "kelo-verify-user");
    fs::copy_file(fs::path(services) / "kelo", folder / "pam.d" / "kelo");
    return folder / "kelo";
}

std::map<std::string, std::string> withFoldersBelow(const fs::path& data,
                                                    std::map<std::string, std::string> variables) {
    // Known to this process alone: what Kelo has in its memory, the user has typed.
    variables.try_emplace("KELO_PRIVATE_DESKTOP_PASSWORD", "");
    for (const auto& [name, folder] :
         {std::pair{"XDG_DATA_HOME", "data"}, std::pair{"XDG_CACHE_HOME", "cache"},
          std::pair{"XDG_CONFIG_HOME", "config"}, std::pair{"XDG_STATE_HOME", "state"}}) {
        fs::create_directories(data / folder);
        variables[name] = data / folder;
    }
    return variables;
}

std::vector<std::string> commandLine(const fs::path& program,
                                     const std::vector<std::string>& arguments) {
    std::vector<std::string> all{program};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

} // namespace

KeloProcess::KeloProcess(const fs::path& build, const fs::path& data, const fs::path& output,
                         const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment)
    : process(commandLine(programToRun(build, data), arguments),
              withFoldersBelow(data, environment), output) {}

} // namespace kelo::rig
