#include "testing/rig/KeloProcess.h"

#include <cstdlib>
#include <fstream>

namespace kelo::rig {

namespace {

namespace fs = std::filesystem;

/// Where the kernel gave us no mount namespace, PAM finds the service "kelo" only through
/// libpam_wrapper. That must be loaded into the helper that verifies the user and into nothing else
/// (a sandboxed web process does not survive it). Kelo takes the helper that lies next to it, so it
/// runs from a folder of links in which a script stands in the helper's place.
fs::path programToRun(const fs::path& build, const fs::path& data) {
    const char* wrapper = std::getenv("KELO_PRIVATE_DESKTOP_PAM_WRAPPER");
    if (!wrapper)
        return build / "kelo";
    const fs::path folder = data / "programs";
    if (fs::exists(folder))
        return folder / "kelo";
    fs::create_directories(folder);
    fs::copy_file(build / "kelo", folder / "kelo");
    const fs::path helper = folder / "kelo-verify-user";
    std::ofstream(helper) << "#!/bin/sh\n"
                          << "LD_PRELOAD=libpam_wrapper.so PAM_WRAPPER=1 PAM_WRAPPER_SERVICE_DIR='"
                          << wrapper << "' exec '" << (build / "kelo-verify-user").string()
                          << "' \"$@\"\n";
    fs::permissions(helper, fs::perms::owner_all);
    return folder / "kelo";
}

std::map<std::string, std::string> environment(const fs::path& data) {
    std::map<std::string, std::string> variables;
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
                         const std::vector<std::string>& arguments)
    : process(commandLine(programToRun(build, data), arguments), environment(data), output) {}

} // namespace kelo::rig
