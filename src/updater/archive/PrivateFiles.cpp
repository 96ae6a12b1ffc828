#include "updater/archive/PrivateFiles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace kelo::updater {

bool makePrivateFolders(const std::filesystem::path& folder) {
    if (mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST)
        return true;
    const auto parent = folder.parent_path();
    if (errno != ENOENT || parent.empty() || parent == folder || !makePrivateFolders(parent))
        return false;
    return mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST;
}

bool writeAll(int descriptor, std::span<const char> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

std::string failureLine(std::string_view what, const std::filesystem::path& file) {
    const std::error_code reason(errno, std::generic_category());
    return std::string(what) + " " + file.string() + ": " + reason.message();
}

} // namespace kelo::updater
