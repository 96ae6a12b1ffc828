#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace kelo::layers {

struct CommandResult {
    int status = 0;
    std::string output;
};

/// Runs a shell command; its errors are part of the output.
inline CommandResult run(const std::string& command) {
    CommandResult result;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe)
        return {-1, "cannot be started"};
    std::array<char, 4096> buffer{};
    std::size_t count = 0;
    while ((count = fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        result.output.append(buffer.data(), count);
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

} // namespace kelo::layers
