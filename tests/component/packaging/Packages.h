#pragma once

#include "component/installer/Trees.h"

#include <filesystem>
#include <string>

namespace kelo::tests {

struct Outcome {
    int status = -1;
    std::string output; ///< including errors
};

/// Runs a shell command with no display, session bus or update key in its environment.
Outcome runCommand(const std::string& command);

/// Both packages of this build tree, made once for all tests of the process.
class Packages {
public:
    static const Packages& ofThisBuild();

    std::filesystem::path package() const;
    std::filesystem::path archive() const;
    /// The archive's content, unpacked below a home folder of its own.
    std::filesystem::path tree() const { return folder / ("home/" + name); }
    const std::string& log() const { return log_; }

private:
    Packages();

    TreeFolder folder;
    std::string name;
    std::string log_;
};

} // namespace kelo::tests
