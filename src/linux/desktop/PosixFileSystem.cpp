#include "linux/desktop/PosixFileSystem.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace kelo::desktop {

namespace {

/// Another user may have made the file to read what we write, or a second name of a file of ours to
/// have it overwritten.
bool isOursAlone(const struct stat& status) {
    return S_ISREG(status.st_mode) && status.st_uid == ::geteuid() && status.st_nlink == 1;
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

// O_NONBLOCK, because opening a FIFO that somebody put there would block.
posix::FileDescriptor PosixFileSystem::openOwn(const std::string& path, int flags) {
    posix::FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | flags, 0600));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0)
        return posix::FileDescriptor();
    if (isOursAlone(status))
        return file;
    // Once, because every line of the log comes here.
    if (!std::exchange(warned, true))
        g_warning("%s belongs to another user, has a second name or is no regular file. Nothing is "
                  "written to it.",
                  path.c_str());
    return posix::FileDescriptor();
}

std::unique_ptr<platform::OpenFile> PosixFileSystem::openForWriting(const std::string& path) {
    auto file = openOwn(path, 0);
    if (!file)
        return nullptr;
    return std::make_unique<PosixFile>(std::move(file));
}

bool PosixFileSystem::writeWholeFile(const std::string& path, ByteView bytes) {
    const auto file = openOwn(path, O_CREAT);
    // Truncated only once it is known to be a file of ours.
    return file && ::ftruncate(file.get(), 0) == 0 && posix::writeAll(file.get(), bytes);
}

} // namespace kelo::desktop
