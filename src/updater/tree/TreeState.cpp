#include "updater/tree/TreeState.h"

#include "bundle/InformationFile.h"
#include "bundle/ProgramPlace.h"
#include "updater/appcast/Version.h"
#include "updater/files/InstallFiles.h"
#include "updater/tree/WorkFolder.h"

#include <fcntl.h>
#include <unistd.h>

namespace kelo::updater {

namespace {

constexpr std::size_t longestMark = 4096;

std::optional<TreeUpdate> readMark(int folder, const char* name) {
    const posix::FileDescriptor file(
        ::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    const auto text = file ? posix::readAll(file.get(), longestMark) : std::nullopt;
    const auto first = text ? text->find('\n') : std::string::npos;
    // A process may have been killed while it wrote them.
    const bool hasBothLines =
        first != std::string::npos && text->find('\n', first + 1) == text->size() - 1;
    if (!hasBothLines)
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
    const posix::FileDescriptor file(::openat(workFolder, WorkFolder::updateMark,
                                              O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                              0600));
    return file &&
           posix::writeAll(file.get(), update.version + "\n" + update.shownVersion + "\n") &&
           ::fsync(file.get()) == 0 && ::fsync(workFolder) == 0;
}

// The names of the folders do not tell a staged tree from the one before an exchange that was cut
// off, so the versions do.
TreeState stateOf(const WorkFolder& work) {
    if (work.isCutOff())
        return TreeState::cutOff;
    if (work.has(WorkFolder::failedMark))
        return TreeState::takenBack;
    const auto wanted = readMark(work.descriptor(), WorkFolder::updateMark);
    const auto installed = versionOf(work.tree());
    if (!wanted || !installed)
        return TreeState::settled;
    if (compareVersions(wanted->version, installed->version) == 0)
        return work.hasTreeBefore() ? TreeState::onTrial : TreeState::settled;
    if (work.has(WorkFolder::starting))
        return TreeState::takenBack;
    return isOlder(installed->version, wanted->version) && work.hasProgram("new")
               ? TreeState::staged
               : TreeState::settled;
}

std::optional<TreeUpdate> updateOf(const WorkFolder& work) {
    const auto failed = readMark(work.descriptor(), WorkFolder::failedMark);
    return failed ? failed : readMark(work.descriptor(), WorkFolder::updateMark);
}

} // namespace kelo::updater
