#include "authenticator/store/FormerFile.h"

#include "authenticator/store/Database.h"
#include "posix/FileDescriptor.h"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace kelo::authenticator {

namespace {

std::filesystem::path besides(const std::filesystem::path& file, const char* ending) {
    return file.string() + ending;
}

[[noreturn]] void copyFailed(const char* operation) {
    storageFailed(errno == ENOSPC ? SQLITE_FULL : SQLITE_CANTOPEN,
                  std::string("copying the former file: ") + operation + ": " +
                      std::strerror(errno));
}

void copyBytes(const std::filesystem::path& from, const std::filesystem::path& to) {
    const posix::FileDescriptor source(::open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    const posix::FileDescriptor target(
        ::open(to.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_NOFOLLOW | O_CLOEXEC, 0600));
    struct stat status {};
    if (!source || !target || ::fstat(source.get(), &status) != 0)
        copyFailed("open");
    for (off_t done = 0; done < status.st_size;) {
        const auto left = static_cast<std::size_t>(status.st_size - done);
        if (::sendfile(target.get(), source.get(), &done, left) <= 0)
            copyFailed("write");
    }
    if (::fsync(target.get()) != 0)
        copyFailed("fsync");
}

} // namespace

void keepFormerFile(const std::filesystem::path& file) {
    const auto kept = besides(file, ".former");
    std::error_code ignored;
    if (std::filesystem::exists(kept, ignored))
        return;
    // Under another name until it is whole: half a copy must not pass for one.
    const auto part = besides(file, ".former.part");
    copyBytes(file, part);
    if (::rename(part.c_str(), kept.c_str()) != 0)
        copyFailed("rename");
}

void dropFormerFile(const std::filesystem::path& file) {
    std::error_code ignored;
    std::filesystem::remove(besides(file, ".former"), ignored);
    std::filesystem::remove(besides(file, ".former.part"), ignored);
}

} // namespace kelo::authenticator
