#include "updater/install/WorkFolder.h"

#include "bundle/InformationFile.h"
#include "bundle/ProgramPlace.h"
#include "updater/appcast/Version.h"
#include "updater/install/InstallFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace kelo::updater {

namespace {

constexpr const char* updateMark = "update";
constexpr const char* failedMark = "failed";
constexpr const char* takingBack = "taking-back";
constexpr std::size_t longestMark = 4096;

bool isHeld(int folder) {
    return ::flock(folder, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

bool hasProgram(int folder, const char* tree) {
    return exists(folder, std::string(tree) + "/bin/kelo");
}

std::optional<TreeUpdate> readMark(int folder, const char* name) {
    const posix::FileDescriptor file(
        ::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    const auto text = file ? posix::readAll(file.get(), longestMark) : std::nullopt;
    const auto first = text ? text->find('\n') : std::string::npos;
    if (first == std::string::npos || !text->ends_with('\n'))
        return std::nullopt;
    return TreeUpdate{text->substr(0, first), text->substr(first + 1, text->size() - first - 2)};
}

} // namespace

std::optional<TreeUpdate> versionOf(const std::filesystem::path& tree) {
    const auto found = bundle::readInformationFile(bundle::informationPath(tree));
    const auto text = [&](const char* key) {
        return found ? platform::informationValue<std::string>(*found, key) : std::nullopt;
    };
    const auto version = text("CFBundleVersion");
    if (!version)
        return std::nullopt;
    return TreeUpdate{*version, text("CFBundleShortVersionString").value_or(*version)};
}

bool markStaged(int workFolder, const TreeUpdate& update) {
    const posix::FileDescriptor file(::openat(
        workFolder, updateMark, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    return file &&
           posix::writeAll(file.get(), update.version + "\n" + update.shownVersion + "\n") &&
           ::fsync(file.get()) == 0 && ::fsync(workFolder) == 0;
}

WorkFolder::WorkFolder(std::filesystem::path root, posix::FileDescriptor parent,
                       posix::FileDescriptor folder)
    : root(std::move(root)), parent(std::move(parent)), folder(std::move(folder)) {}

std::optional<WorkFolder> WorkFolder::take(const std::filesystem::path& root) {
    posix::FileDescriptor parent(
        ::open(root.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    posix::FileDescriptor folder =
        parent ? openFolder(parent.get(), workFolderName(root)) : posix::FileDescriptor();
    struct stat status {};
    if (!folder || ::fstat(folder.get(), &status) != 0 || status.st_uid != ::geteuid() ||
        isHeld(folder.get()))
        return std::nullopt;
    return WorkFolder(root, std::move(parent), std::move(folder));
}

bool WorkFolder::has(const char* name) const {
    return exists(folder.get(), name);
}

// The names of the folders do not tell a staged tree from the one before an exchange that was cut
// off, so the versions do.
TreeState WorkFolder::state() const {
    if (has(takingBack) || exchangeWasInterrupted(folder.get()))
        return TreeState::cutOff;
    if (has(failedMark))
        return TreeState::takenBack;
    const auto wanted = readMark(folder.get(), updateMark);
    const auto installed = versionOf(root);
    if (!wanted || !installed)
        return TreeState::settled;
    if (compareVersions(wanted->version, installed->version) == 0)
        return treeBefore() || has("previous") ? TreeState::onTrial : TreeState::settled;
    if (has(starting))
        return TreeState::takenBack;
    return isOlder(installed->version, wanted->version) && hasProgram(folder.get(), "new")
               ? TreeState::staged
               : TreeState::settled;
}

std::optional<TreeUpdate> WorkFolder::update() const {
    const auto failed = readMark(folder.get(), failedMark);
    return failed ? failed : readMark(folder.get(), updateMark);
}

void WorkFolder::install(const ExchangeCalls& calls) const {
    exchangeTrees(root, parent.get(), folder.get(), calls);
}

const char* WorkFolder::treeBefore() const {
    for (const char* name : {"old", "new"}) {
        if (hasProgram(folder.get(), name))
            return name;
    }
    return nullptr;
}

void WorkFolder::noteTakenBack() const {
    ::renameat(folder.get(), updateMark, folder.get(), failedMark);
    ::unlinkat(folder.get(), takingBack, AT_REMOVEDIR);
    ::fsync(folder.get());
}

bool WorkFolder::takeTreeBack(const ExchangeCalls& calls) const {
    // Without this mark a stop between the next two steps would look like a staged update.
    const posix::FileDescriptor mark(
        ::openat(folder.get(), starting, O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!mark || ::fsync(folder.get()) != 0)
        return false;
    calls.step();
    const char* const before = treeBefore();
    if (before) {
        const std::string name = root.filename();
        if (calls.exchange(parent.get(), name.c_str(), folder.get(), before) != 0)
            return false;
        ::fsync(parent.get());
    } else {
        const bool marked = makeFolder(folder.get(), takingBack) && ::fsync(folder.get()) == 0;
        calls.step();
        if (!marked || !takeBack(root, parent.get(), folder.get(), calls))
            return false;
    }
    calls.step();
    noteTakenBack();
    calls.step();
    return true;
}

bool WorkFolder::endCutOff(const ExchangeCalls& calls) const {
    if (!takeBack(root, parent.get(), folder.get(), calls))
        return false;
    if (has(takingBack))
        noteTakenBack();
    else
        ::unlinkat(folder.get(), updateMark, 0); // pieces of what was staged are missing
    return true;
}

void WorkFolder::remove(const ExchangeCalls& calls) const {
    // The marks go first: with them, half a tree would pass for one to be put in place. "new" goes
    // last. If this process is killed in between, what is left looks like an exchange that was
    // undone completely, or like none.
    for (const auto* name : {updateMark, failedMark, "previous", "added", "discarded", "copying",
                             "unpacking", "old", "new"}) {
        removeTree(folder.get(), name);
        calls.step();
    }
    removeTree(parent.get(), workFolderName(root));
}

} // namespace kelo::updater
