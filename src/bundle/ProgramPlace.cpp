#include "bundle/ProgramPlace.h"

#include <iterator>
#include <system_error>

namespace kelo::bundle {

namespace {

const std::filesystem::path place(KELO_PROGRAM_PLACE); // relative to the prefix

/// The prefix of a program that is at that place; empty for any other.
std::filesystem::path prefixOfProgram(const std::filesystem::path& program) {
    auto prefix = program;
    for (auto left = std::distance(place.begin(), place.end()); left > 0; --left)
        prefix = prefix.parent_path();
    return prefix / place == program ? prefix : std::filesystem::path();
}

} // namespace

std::filesystem::path programPath() {
    std::error_code failure;
    auto path = std::filesystem::read_symlink("/proc/self/exe", failure);
    if (failure)
        return {};
    const auto prefix = prefixOfProgram(path);
    if (prefix.empty())
        return path;
    const auto installed = prefix / "bin" / "kelo";
    return std::filesystem::exists(installed, failure) ? installed : prefix / "kelo";
}

std::filesystem::path programBehind(const std::filesystem::path& prefix) {
    return prefix / place;
}

std::filesystem::path installationPrefix(const std::filesystem::path& program) {
    const auto folder = program.parent_path();
    return folder.filename() == "bin" ? folder.parent_path() : folder;
}

std::filesystem::path informationPath(const std::filesystem::path& prefix) {
    return prefix / "share" / "kelo" / "Info.plist";
}

} // namespace kelo::bundle
