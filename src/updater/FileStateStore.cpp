#include "updater/FileStateStore.h"

#include "posix/FileDescriptor.h"
#include "updater/archive/PrivateFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace kelo::updater {

namespace {

constexpr std::size_t longestFile = std::size_t(64) * 1024;

bool isOurs(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid();
}

std::optional<std::string> readWhole(int descriptor) {
    std::string text(longestFile + 1, '\0');
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t count = read(descriptor, text.data() + done, text.size() - done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    text.resize(done);
    return done <= longestFile ? std::optional(std::move(text)) : std::nullopt;
}

} // namespace

FileStateStore::FileStateStore(std::filesystem::path file, Journal journal)
    : file(std::move(file)), journal(std::move(journal)) {}

UpdaterState FileStateStore::load() {
    // Not blocking, because it could be a pipe that somebody has put there.
    const posix::FileDescriptor descriptor(
        open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!descriptor && (errno == ENOENT || errno == ENOTDIR))
        return {};
    const auto text =
        descriptor && isOurs(descriptor.get()) ? readWhole(descriptor.get()) : std::nullopt;
    auto state = text ? parseUpdaterState(*text) : std::nullopt;
    if (!state)
        journal("What the updater remembers could not be read from " + file.string() +
                "; it starts afresh.");
    return state.value_or(UpdaterState());
}

void FileStateStore::save(const UpdaterState& state) {
    const std::string text = textOf(state);
    std::string name = file.string() + ".XXXXXX";
    if (!makePrivateFolders(file.parent_path()))
        return journal(failureLine("Could not make", file.parent_path()));
    const posix::FileDescriptor descriptor(mkostemp(name.data(), O_CLOEXEC));
    if (!descriptor)
        return journal(failureLine("Could not write", file));
    if (!writeAll(descriptor.get(), text) || fsync(descriptor.get()) != 0 ||
        rename(name.c_str(), file.c_str()) != 0) {
        journal(failureLine("Could not write", file));
        unlink(name.c_str());
    }
}

} // namespace kelo::updater
