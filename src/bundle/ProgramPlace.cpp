#include "bundle/ProgramPlace.h"

#include <system_error>

namespace kelo::bundle {

std::filesystem::path programPath() {
    std::error_code failure;
    auto path = std::filesystem::read_symlink("/proc/self/exe", failure);
    return failure ? std::filesystem::path() : path;
}

std::filesystem::path installationPrefix(const std::filesystem::path& program) {
    const auto folder = program.parent_path();
    return folder.filename() == "bin" ? folder.parent_path() : folder;
}

std::filesystem::path informationPath(const std::filesystem::path& prefix) {
    return prefix / "share" / "kelo" / "Info.plist";
}

} // namespace kelo::bundle
