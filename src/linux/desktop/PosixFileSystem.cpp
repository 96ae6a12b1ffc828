#include "linux/desktop/PosixFileSystem.h"

#include "posix/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace kelo::desktop {

namespace {

/// Empty if the path cannot be opened or is not a regular file. O_NONBLOCK, because opening a FIFO
/// that somebody put there would block.
posix::FileDescriptor openRegular(const std::string& path, int flags) {
    posix::FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | flags, 0600));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return posix::FileDescriptor();
    return file;
}

class PosixFile final : public platform::OpenFile {
public:
    explicit PosixFile(posix::FileDescriptor file) : file(std::move(file)) {}
    void seekToEnd() override { ::lseek(file.get(), 0, SEEK_END); }
    void write(ByteView bytes) override { posix::writeAll(file.get(), bytes); }

private:
    posix::FileDescriptor file;
};

} // namespace

std::unique_ptr<platform::OpenFile> PosixFileSystem::openForWriting(const std::string& path) {
    auto file = openRegular(path, 0);
    if (!file)
        return nullptr;
    return std::make_unique<PosixFile>(std::move(file));
}

bool PosixFileSystem::writeWholeFile(const std::string& path, ByteView bytes) {
    const auto file = openRegular(path, O_CREAT);
    // Truncated only once it is known to be a regular file.
    return file && ::ftruncate(file.get(), 0) == 0 && posix::writeAll(file.get(), bytes);
}

} // namespace kelo::desktop
