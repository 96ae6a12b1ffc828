#include "updater/tree/InstalledCopy.h"

#include "bundle/ProgramPlace.h"
#include "updater/files/InstallFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <set>

namespace kelo::updater {

namespace {

namespace fs = std::filesystem;

/// Far more names than our lists have.
constexpr std::size_t mostFiles = 20000;

bool isBelow(const fs::path& path, const fs::path& folder) {
    const auto [end, rest] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return !folder.empty() && end == folder.end() && rest != path.end();
}

bool isMine(const fs::path& folder) {
    struct stat status {};
    return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid();
}

} // namespace

InstalledCopy findInstalledCopy(const fs::path& program, const fs::path& home) {
    InstalledCopy copy{CopyOwner::unknown, bundle::installationPrefix(program)};
    std::error_code failure;
    const fs::path canonicalHome = fs::canonical(home, failure);
    const bool inPlace = program == copy.root / "bin" / "kelo";
    if (inPlace && isBelow(program, "/usr") && !isBelow(program, "/usr/local"))
        copy.owner = CopyOwner::packageManager;
    else if (inPlace && !failure && isBelow(copy.root, canonicalHome) && isMine(copy.root) &&
             isMine(copy.root.parent_path())) {
        const auto stray = foreignFile(copy.root);
        if (!stray)
            copy.owner = CopyOwner::user;
        else if (*stray != treeListPath)
            copy.strayFile = *stray;
    }
    return copy;
}

std::optional<std::string> foreignFile(const fs::path& root) {
    std::ifstream list(root / treeListPath);
    std::set<std::string> own;
    for (std::string line; own.size() < mostFiles && std::getline(list, line);)
        own.insert(line);
    if (own.empty())
        return treeListPath;
    const posix::FileDescriptor folder(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder)
        return treeListPath;
    // One file more than listed suffices, which avoids reading a whole home folder.
    for (auto& file : filesBelow(folder.get(), own.size() + 1)) {
        if (!own.contains(file))
            return std::move(file);
    }
    return std::nullopt;
}

} // namespace kelo::updater
