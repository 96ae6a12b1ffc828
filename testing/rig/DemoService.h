#pragma once

#include "testing/rig/ChildProcess.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kelo::rig {

/// The demo service of a build, answering at the origin that is compiled into Kelo.
class DemoService {
public:
    /// Starts it and waits until it answers. `authority` is the folder with the certificate
    /// authority to use, `state` the file that carries accounts and passkeys from one run to the
    /// next (empty: none). If it does not start, throws std::runtime_error with its output.
    DemoService(const std::filesystem::path& build, const std::filesystem::path& authority,
                const std::filesystem::path& output, const std::filesystem::path& state = {},
                const std::vector<std::string>& options = {});

    void end() { process.end(); }
    pid_t identifier() const { return process.identifier(); }
    std::string printed() const { return process.printed(); }

    /// Makes a certificate authority in the folder.
    static void makeAuthority(const std::filesystem::path& build,
                              const std::filesystem::path& folder,
                              const std::filesystem::path& output);

private:
    ChildProcess process;
};

} // namespace kelo::rig
