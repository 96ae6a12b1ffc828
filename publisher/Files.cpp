#include "publisher/Files.h"

#include "posix/FileDescriptor.h"
#include "publisher/Failure.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>

namespace kelo::publisher {

namespace {

[[noreturn]] void fail(const std::string& what, const std::filesystem::path& path) {
    const std::string reason = std::generic_category().message(errno);
    throw Failure(what + " \"" + path.string() + "\": " + reason + ".");
}

void writeAndSync(int file, std::string_view content, const std::filesystem::path& path) {
    if (!posix::writeAll(file, content) || ::fsync(file) != 0)
        fail("Could not write", path);
}

void syncFolderOf(const std::filesystem::path& path) {
    const auto folder = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
    const posix::FileDescriptor handle(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (handle)
        ::fsync(handle.get());
}

} // namespace

MappedFile::MappedFile(const std::filesystem::path& path) {
    const posix::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0)
        fail("Could not read", path);
    if (!S_ISREG(status.st_mode))
        throw Failure("\"" + path.string() + "\" is not a file.");
    size = static_cast<std::size_t>(status.st_size);
    if (size == 0)
        return;
    void* const mapping = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.get(), 0);
    if (mapping == MAP_FAILED)
        fail("Could not read", path);
    start = static_cast<const std::uint8_t*>(mapping);
}

MappedFile::~MappedFile() {
    if (start)
        ::munmap(const_cast<std::uint8_t*>(start), size);
}

std::optional<std::string> readText(const std::filesystem::path& path) {
    std::error_code failure;
    if (!std::filesystem::exists(path, failure))
        return std::nullopt;
    const MappedFile file(path);
    const auto bytes = file.bytes();
    return std::string(bytes.begin(), bytes.end());
}

void writeNewSecretFile(const std::filesystem::path& path, std::string_view content) {
    const posix::FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file && errno == EEXIST)
        throw Failure("There is a file \"" + path.string() +
                      "\" already, and a key that is overwritten is lost. Name another file.");
    if (!file)
        fail("Could not make", path);
    writeAndSync(file.get(), content, path);
    syncFolderOf(path);
}

void replaceFile(const std::filesystem::path& path, std::string_view content) {
    auto fresh = path;
    fresh.replace_filename("." + path.filename().string() + ".new");
    {
        const posix::FileDescriptor file(
            ::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644));
        if (!file)
            fail("Could not make", fresh);
        writeAndSync(file.get(), content, fresh);
    }
    if (::rename(fresh.c_str(), path.c_str()) != 0)
        fail("Could not replace", path);
    syncFolderOf(path);
}

} // namespace kelo::publisher
