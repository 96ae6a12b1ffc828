#include "updater/install/ArchiveReader.h"

#include "updater/files/InstallFailure.h"
#include "updater/files/InstallFiles.h"
#include "updater/install/ArchivePath.h"
#include "updater/install/ArchiveSource.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <span>
#include <vector>

namespace kelo::updater {

namespace {

class Unpacking {
public:
    Unpacking(int file, int folder, const ArchiveLimits& limits)
        : source{file}, folder(folder), limits(limits), reader(makeTarReader()) {}

    std::string run() {
        check(archive_read_open(reader.get(), &source, nullptr, &ArchiveSource::read, nullptr));
        archive_entry* entry = nullptr;
        while (true) {
            const int status = archive_read_next_header(reader.get(), &entry);
            if (status == ARCHIVE_EOF)
                break;
            check(status);
            if (++entries > limits.entries)
                throw unfitArchive("more than " + std::to_string(limits.entries) + " entries");
            unpack(entry);
        }
        // Links come last, so that no entry can be written through one.
        for (const auto& link : links)
            make(link);
        if (top.empty())
            throw unfitArchive("it is empty");
        if (!syncFolders(folder))
            fail("fsync");
        return top;
    }

private:
    struct SymbolicLink {
        std::vector<std::string> path;
        std::string target;
    };

    void check(int status) const {
        if (status == ARCHIVE_OK)
            return;
        const char* const reason = archive_error_string(reader.get());
        throw unfitArchive(reason ? reason : "cannot be read");
    }

    [[noreturn]] static void fail(const std::string& what) { throw unpackFailure(errno, what); }

    void unpack(archive_entry* entry) {
        const char* const text = archive_entry_pathname(entry);
        const auto path = archivePath(text ? text : "");
        if (!path)
            throw unfitArchive(std::string("path ") + (text ? text : "unreadable"));
        if (archive_entry_perm(entry) & (S_ISUID | S_ISGID | S_ISVTX))
            throw unfitArchive(std::string("special permissions of ") + text);
        const auto type = archive_entry_filetype(entry);
        if (path->empty()) {
            if (type != AE_IFDIR)
                throw unfitArchive("its root is not a folder");
            return;
        }
        if (top.empty())
            top = path->front();
        if (path->front() != top || (path->size() == 1 && type != AE_IFDIR))
            throw unfitArchive("more than one top folder: " + path->front());

        if (const char* const other = archive_entry_hardlink(entry))
            makeHardLink(*path, other);
        else if (type == AE_IFDIR)
            openInside(*path);
        else if (type == AE_IFREG)
            writeFile(*path, archive_entry_perm(entry));
        else if (const char* const target = archive_entry_symlink(entry);
                 type == AE_IFLNK && target)
            links.push_back({*path, target});
        else
            throw unfitArchive(std::string("neither file, folder nor link: ") + text);
    }

    /// Opens the folder of that path and makes missing ones.
    posix::FileDescriptor openInside(std::span<const std::string> path) const {
        posix::FileDescriptor current(::fcntl(folder, F_DUPFD_CLOEXEC, 0));
        for (const auto& name : path) {
            current = makeFolder(current.get(), name);
            if (!current)
                failOf(name);
        }
        return current;
    }

    posix::FileDescriptor openParent(const std::vector<std::string>& path) const {
        return openInside(std::span(path).first(path.size() - 1));
    }

    /// A name that exists already is an error of the archive; anything else is one of the disk.
    [[noreturn]] static void failOf(const std::string& name) {
        if (errno == EEXIST || errno == ENOTDIR || errno == ELOOP || errno == ENAMETOOLONG)
            throw unfitArchive("the same name twice: " + name);
        fail(name);
    }

    void writeFile(const std::vector<std::string>& path, mode_t permissions) {
        const posix::FileDescriptor parent = openParent(path);
        const posix::FileDescriptor file(
            ::openat(parent.get(), path.back().c_str(),
                     O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!file)
            failOf(path.back());
        const std::uint64_t length = writeContent(file.get());
        // A sparse file can end in a hole, for which there is no data block.
        if (::ftruncate(file.get(), static_cast<off_t>(length)) != 0 ||
            ::fchmod(file.get(), permissions & S_IXUSR ? 0755 : 0644) != 0 ||
            ::fsync(file.get()) != 0)
            fail(path.back());
    }

    std::uint64_t writeContent(int file) {
        std::uint64_t length = 0;
        while (true) {
            const void* block = nullptr;
            std::size_t size = 0;
            la_int64_t offset = 0;
            const int status = archive_read_data_block(reader.get(), &block, &size, &offset);
            const std::uint64_t end = static_cast<std::uint64_t>(offset) + size;
            if (status != ARCHIVE_EOF)
                check(status);
            if (end > limits.bytes - bytes)
                throw unfitArchive("more than " + std::to_string(limits.bytes) + " bytes");
            if (end > length)
                length = end;
            if (status == ARCHIVE_EOF)
                break;
            writeAt(file, static_cast<const char*>(block), size, offset);
        }
        bytes += length;
        return length;
    }

    static void writeAt(int file, const char* block, std::size_t size, off_t offset) {
        while (size > 0) {
            const ssize_t written = ::pwrite(file, block, size, offset);
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0)
                fail("write");
            block += written;
            size -= static_cast<std::size_t>(written);
            offset += written;
        }
    }

    void makeHardLink(const std::vector<std::string>& path, const char* other) const {
        const auto from = archivePath(other);
        if (!from || from->size() < 2 || from->front() != top)
            throw unfitArchive(std::string("hard link to ") + other);
        const posix::FileDescriptor source = openParent(*from);
        const posix::FileDescriptor parent = openParent(path);
        // Without AT_SYMLINK_FOLLOW linkat() follows no link.
        if (::linkat(source.get(), from->back().c_str(), parent.get(), path.back().c_str(), 0) != 0)
            throw unfitArchive(std::string("hard link to ") + other);
    }

    void make(const SymbolicLink& link) const {
        if (!staysInTree(link.path, link.target))
            throw unfitArchive("link to " + link.target);
        const posix::FileDescriptor parent = openParent(link.path);
        if (::symlinkat(link.target.c_str(), parent.get(), link.path.back().c_str()) != 0)
            failOf(link.path.back());
    }

    ArchiveSource source;
    int folder;
    ArchiveLimits limits;
    ArchivePointer reader;
    std::vector<SymbolicLink> links;
    std::string top;
    std::size_t entries = 0;
    std::uint64_t bytes = 0;
};

} // namespace

std::string unpackArchive(int archive, int folder, const ArchiveLimits& limits) {
    Unpacking unpacking(archive, folder, limits);
    return unpacking.run();
}

} // namespace kelo::updater
