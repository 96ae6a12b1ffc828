#include "updater/files/InstallFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>

namespace kelo::updater {

namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

bool isFolder(int parent, const std::string& name) {
    struct stat status {};
    return ::fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode);
}

void collect(int folder, const std::string& prefix, std::size_t most,
             std::vector<std::string>& files) {
    for (const auto& name : namesIn(folder)) {
        if (files.size() >= most)
            return;
        if (isFolder(folder, name))
            collect(openFolder(folder, name).get(), prefix + name + "/", most, files);
        else
            files.push_back(prefix + name);
    }
}

} // namespace

posix::FileDescriptor openFolder(int parent, const std::string& name) {
    return posix::FileDescriptor(
        ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

posix::FileDescriptor makeFolder(int parent, const std::string& name) {
    if (::mkdirat(parent, name.c_str(), 0755) != 0 && errno != EEXIST)
        return posix::FileDescriptor();
    return openFolder(parent, name);
}

std::vector<std::string> namesIn(int folder) {
    std::vector<std::string> names;
    // A second descriptor, because reading moves the offset and closedir() closes it.
    posix::FileDescriptor own(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, DirectoryCloser> directory(own ? ::fdopendir(own.get()) : nullptr);
    if (directory)
        own.release();
    while (directory) {
        const dirent* const entry = ::readdir(directory.get());
        if (!entry)
            break;
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            names.push_back(name);
    }
    std::ranges::sort(names);
    return names;
}

std::vector<std::string> filesBelow(int folder, std::size_t most) {
    std::vector<std::string> files;
    collect(folder, "", most, files);
    return files;
}

bool exists(int parent, const std::string& name) {
    struct stat status {};
    return ::fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool isSame(int one, int other) {
    struct stat first {};
    struct stat second {};
    return ::fstat(one, &first) == 0 && ::fstat(other, &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

bool removeTree(int parent, const std::string& name) {
    if (::unlinkat(parent, name.c_str(), 0) == 0 || errno == ENOENT)
        return true;
    const posix::FileDescriptor folder = openFolder(parent, name);
    if (!folder)
        return false;
    bool all = true;
    for (const auto& inside : namesIn(folder.get()))
        all = removeTree(folder.get(), inside) && all;
    return all && ::unlinkat(parent, name.c_str(), AT_REMOVEDIR) == 0;
}

bool syncFolders(int folder) {
    for (const auto& name : namesIn(folder)) {
        if (isFolder(folder, name) && !syncFolders(openFolder(folder, name).get()))
            return false;
    }
    return ::fsync(folder) == 0;
}

bool copyFile(int from, const std::string& name, int to) {
    const posix::FileDescriptor source(
        ::openat(from, name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!source || ::fstat(source.get(), &status) != 0)
        return false;
    const posix::FileDescriptor copy(
        ::openat(to, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!copy)
        return false;
    std::array<char, 65536> buffer{};
    ssize_t count = 0;
    while ((count = ::read(source.get(), buffer.data(), buffer.size())) != 0) {
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 ||
            !posix::writeAll(copy.get(), {buffer.data(), static_cast<std::size_t>(count)}))
            return false;
    }
    return ::fchmod(copy.get(), status.st_mode & 0777) == 0 && ::fsync(copy.get()) == 0;
}

} // namespace kelo::updater
