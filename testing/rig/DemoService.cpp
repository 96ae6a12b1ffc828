#include "testing/rig/DemoService.h"

#include <stdexcept>

namespace kelo::rig {

namespace {

constexpr std::chrono::seconds patience{30};

std::vector<std::string> commandLine(const std::filesystem::path& build,
                                     const std::filesystem::path& authority,
                                     const std::filesystem::path& state,
                                     const std::vector<std::string>& options) {
    std::vector<std::string> command{build / "kelo-demo-service", "--authority", authority,
                                     "--port", "8443"};
    if (!state.empty()) {
        command.emplace_back("--state");
        command.emplace_back(state);
    }
    command.insert(command.end(), options.begin(), options.end());
    return command;
}

} // namespace

DemoService::DemoService(const std::filesystem::path& build, const std::filesystem::path& authority,
                         const std::filesystem::path& output, const std::filesystem::path& state,
                         const std::vector<std::string>& options)
    : process(commandLine(build, authority, state, options), {}, output) {
    if (!process.awaitPrinted("Listening on", patience))
        throw std::runtime_error("The demo service did not start: " + process.printed());
}

void DemoService::makeAuthority(const std::filesystem::path& build,
                                const std::filesystem::path& folder,
                                const std::filesystem::path& output) {
    ChildProcess maker({build / "kelo-demo-service", "--init", "--authority", folder}, {}, output);
    if (maker.awaitExit(patience) != 0)
        throw std::runtime_error("No certificate authority was made: " + maker.printed());
}

} // namespace kelo::rig
