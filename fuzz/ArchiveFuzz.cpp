#include "FuzzInput.h"
#include "TarWriter.h"
#include "posix/FileDescriptor.h"
#include "updater/error/UpdateError.h"
#include "updater/files/InstallFiles.h"
#include "updater/install/ArchivePath.h"
#include "updater/install/ArchiveReader.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>

// An update from anybody: unpacked into a folder, from which nothing may come out. An input that
// begins with the line "text" describes a tar archive; any other is an archive.

using namespace kelo;
using fuzz::require;
namespace fs = std::filesystem;

namespace {

constexpr updater::ArchiveLimits limits{.entries = 40, .bytes = 100'000};
constexpr std::size_t deepest = 32;

/// A folder in memory for the whole run. It is removed at the end.
class Place {
public:
    Place() {
        const fs::path memory = "/dev/shm";
        std::string name =
            (fs::is_directory(memory) ? memory : fs::temp_directory_path()) / "kelo-archive-XXXXXX";
        require(::mkdtemp(name.data()));
        root = posix::FileDescriptor(::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        path = name;
        target = updater::makeFolder(root.get(), "target");
        archive = posix::FileDescriptor(::memfd_create("archive", MFD_CLOEXEC));
        require(root && target && archive);
    }
    ~Place() { fs::remove_all(path); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    void write(std::string_view content) const {
        require(::ftruncate(archive.get(), 0) == 0);
        require(::pwrite(archive.get(), content.data(), content.size(), 0) == std::ssize(content));
    }

    void clear() const {
        for (const auto& name : updater::namesIn(target.get()))
            require(updater::removeTree(target.get(), name));
    }

    fs::path path;
    posix::FileDescriptor root;
    posix::FileDescriptor target;
    posix::FileDescriptor archive;
};

/// Whether following the link, and the links that it leads to, ends in the tree.
bool leadsIntoTree(const fs::path& link, const fs::path& tree) {
    std::error_code isNowhere;
    const fs::path end = fs::weakly_canonical(link, isNowhere);
    if (isNowhere)
        return true;
    return std::mismatch(tree.begin(), tree.end(), end.begin(), end.end()).first == tree.end();
}

void examineTree(const Place& place, const std::string& top) {
    require(updater::namesIn(place.target.get()) == std::vector<std::string>{top});
    const fs::path tree = place.path / "target" / top;
    std::map<ino_t, std::uint64_t> sizes;
    for (auto entry = fs::recursive_directory_iterator(tree); entry != fs::end(entry); ++entry) {
        struct stat status {};
        require(::lstat(entry->path().c_str(), &status) == 0);
        require(static_cast<std::size_t>(entry.depth()) + 2 <= deepest);
        if (S_ISREG(status.st_mode)) {
            const mode_t permissions = status.st_mode & 07777;
            require(permissions == 0644 || permissions == 0755);
            sizes[status.st_ino] = static_cast<std::uint64_t>(status.st_size);
        } else if (S_ISLNK(status.st_mode)) {
            require(leadsIntoTree(entry->path(), tree));
        } else {
            require(S_ISDIR(status.st_mode) && (status.st_mode & 07000) == 0);
        }
    }
    std::uint64_t bytes = 0;
    for (const auto& [file, size] : sizes)
        bytes += size;
    require(bytes <= limits.bytes && sizes.size() <= limits.entries);
}

void examinePath(std::string_view text) {
    const auto path = updater::archivePath(text);
    if (!path)
        return;
    require(!text.starts_with('/') && path->size() <= deepest);
    for (const std::string& name : *path)
        require(!name.empty() && name != "." && name != ".." &&
                name.find('/') == std::string::npos && name.size() <= 255);
}

/// A link in a folder of the tree, to any target: an own walk through the folders ends in the tree.
void examineLink(std::string_view path, std::string_view target) {
    const auto link = updater::archivePath(path);
    if (!link || !updater::staysInTree(*link, target))
        return;
    require(!target.empty() && !target.starts_with('/'));
    int depth = static_cast<int>(link->size()) - 1;
    for (const auto& name : fs::path(target)) {
        depth += name == ".." ? -1 : name == "." || name.empty() ? 0 : 1;
        require(depth >= 1);
    }
}

void examineTexts(std::string_view description) {
    fuzz::FuzzInput input(description);
    while (!input.isEmpty()) {
        const std::string_view line = input.takeLine();
        const auto middle = std::min(line.find('>'), line.size());
        const auto blank = line.substr(0, middle).rfind(' ');
        const auto start = blank == std::string_view::npos ? 0 : blank + 1;
        examinePath(line.substr(start, middle - start));
        examineLink(line.substr(start, middle - start),
                    line.substr(std::min(middle + 1, line.size())));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Place place;
    constexpr std::string_view textMark = "text\n";
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const bool isText = bytes.starts_with(textMark);
    if (isText) {
        bytes.remove_prefix(textMark.size());
        examineTexts(bytes);
    }
    place.write(isText ? fuzz::tarOf(bytes) : fuzz::withChecksums(bytes));
    try {
        examineTree(place, updater::unpackArchive(place.archive.get(), place.target.get(), limits));
    } catch (const updater::UpdateError& refused) {
        require(refused.kind() == updater::UpdateErrorKind::installing);
    }
    require(updater::namesIn(place.root.get()) == std::vector<std::string>{"target"});
    place.clear();
    return 0;
}
