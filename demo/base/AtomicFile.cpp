#include "demo/base/AtomicFile.h"

#include "demo/base/ServiceError.h"
#include "posix/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace kelo::demo {
namespace {

constexpr std::size_t largestFile = 16 * 1024 * 1024;

[[noreturn]] void fail(const char* what, const std::filesystem::path& path) {
    const auto cause = std::error_code(errno, std::generic_category()).message();
    throw ServiceError(std::string(what) + " " + path.string() + ": " + cause + ".");
}

/// Removes the file beside the real one unless it has taken its place.
class FileBeside {
public:
    explicit FileBeside(const std::filesystem::path& target) : name(target.string() + ".XXXXXX") {
        descriptor = posix::FileDescriptor(::mkostemp(name.data(), O_CLOEXEC));
        if (!descriptor)
            fail("Could not write", target);
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;
    ~FileBeside() {
        if (!moved)
            ::unlink(name.c_str());
    }

    int get() const { return descriptor.get(); }

    bool moveTo(const std::filesystem::path& target) {
        moved = std::rename(name.c_str(), target.c_str()) == 0;
        return moved;
    }

private:
    std::string name;
    posix::FileDescriptor descriptor;
    bool moved = false;
};

} // namespace

void writeFileAtomically(const std::filesystem::path& path, std::string_view content, mode_t mode) {
    FileBeside file(path);
    if (::fchmod(file.get(), mode) != 0 || !posix::writeAll(file.get(), content) ||
        ::fsync(file.get()) != 0 || !file.moveTo(path))
        fail("Could not write", path);

    // Without this the new name may be gone after a power cut, though its content is safe. Some
    // file systems cannot do it for a directory, and then there is nothing more to be done.
    const auto folder = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
    const posix::FileDescriptor directory(
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory)
        ::fsync(directory.get());
}

std::optional<std::string> readFileIfPresent(const std::filesystem::path& path) {
    const posix::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file && errno == ENOENT)
        return std::nullopt;
    if (!file)
        fail("Could not read", path);

    std::string content;
    char part[16384];
    for (;;) {
        const ssize_t count = ::read(file.get(), part, sizeof part);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            fail("Could not read", path);
        if (count == 0)
            return content;
        content.append(part, static_cast<std::size_t>(count));
        if (content.size() > largestFile)
            throw ServiceError(path.string() + " is too large to be one of this service's files.");
    }
}

} // namespace kelo::demo
