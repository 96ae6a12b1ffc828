#include "updater/install/TreeInstaller.h"

#include "base/Translation.h"
#include "bundle/ProgramPlace.h"
#include "updater/appcast/Version.h"
#include "updater/files/InstallFailure.h"
#include "updater/files/InstallFiles.h"
#include "updater/tree/InstallRecovery.h"
#include "updater/tree/InstalledCopy.h"
#include "updater/tree/ProgramStart.h"
#include "updater/tree/TreeState.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace kelo::updater {

namespace {

/// Copies the folder's permissions, which the user may have changed.
void takeOverPermissions(int from, int to) {
    struct stat status {};
    if (::fstat(from, &status) == 0)
        ::fchmod(to, (status.st_mode & 0777) | S_IRWXU);
}

} // namespace

TreeInstaller::TreeInstaller(std::filesystem::path root, ExchangeCalls calls, ArchiveLimits limits)
    : root(std::move(root)), calls(std::move(calls)), limits(limits) {}

TreeInstaller::~TreeInstaller() = default;

void TreeInstaller::stage(int archive, const std::string& version) {
    if (installed)
        throw UpdateError(
            UpdateErrorKind::installing,
            translated("An update is in place already. Quit Kelo and start it again to use it."));
    discard();
    openPlace();
    makeWorkFolder();
    begun = true;
    try {
        calls.step();
        const posix::FileDescriptor unpacking = makeFolder(work.get(), "unpacking");
        if (!unpacking)
            throw installFailure(errno, root, "mkdir");
        const std::string top = unpackArchive(archive, unpacking.get(), limits);
        calls.step();
        if (::renameat(unpacking.get(), top.c_str(), work.get(), "new") != 0)
            throw installFailure(errno, root, "rename the unpacked tree");
        calls.step();
        checkStaged(version);
        takeOverPermissions(tree.get(), openFolder(work.get(), "new").get());
        noteStaged();
        calls.step();
    } catch (...) {
        discard();
        throw;
    }
}

void TreeInstaller::install() {
    if (!begun)
        throw unfitArchive("nothing is staged");
    checkUnchanged();
    exchangeTrees(root, parent.get(), work.get(), calls);
    // The work folder now contains the old tree, which a confirmed start of the new one removes.
    begun = false;
    installed = true;
}

void TreeInstaller::openPlace() {
    parent = posix::FileDescriptor(
        ::open(root.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!parent)
        throw installFailure(errno, root, "open " + root.parent_path().string());
    tree = openFolder(parent.get(), root.filename());
    if (!tree)
        throw folderChanged(root);
}

void TreeInstaller::makeWorkFolder() {
    const std::string name = workFolderName(root);
    clearWorkFolder(root, StagedUpdate::remove);
    if (::mkdirat(parent.get(), name.c_str(), 0700) != 0) {
        if (errno != EEXIST)
            throw installFailure(errno, root, "mkdir " + name);
        throw UpdateError(UpdateErrorKind::installing,
                          translated("Another Kelo is installing an update into “%1”. Wait until "
                                     "it has ended, then try again.",
                                     {root.string()}));
    }
    work = openFolder(parent.get(), name);
    if (!work)
        throw installFailure(errno, root, "open " + name);
    // If the file system has no locks, the folder's existence is the lock.
    ::flock(work.get(), LOCK_EX | LOCK_NB);
}

void TreeInstaller::checkStaged(const std::string& version) const {
    const auto place = root.parent_path() / workFolderName(root) / "new";
    const auto found = versionOf(place);
    if (!found || compareVersions(found->version, version) != 0)
        throw unfitArchive("it says that it is version " + (found ? found->version : "nothing") +
                           ", not " + version);
    // The command answers for itself, so the program behind it is asked as well.
    const auto program = bundle::programBehind(place);
    std::error_code unseen;
    if (!printsHelp(place / "bin" / "kelo", probeDeadline) ||
        (std::filesystem::exists(program, unseen) && !printsHelp(program, probeDeadline)))
        throw UpdateError(
            UpdateErrorKind::installing,
            translated("The new version does not start on this computer, so yours stays. It may "
                       "need a newer system; ask its publisher."));
}

void TreeInstaller::noteStaged() {
    const auto update = versionOf(root.parent_path() / workFolderName(root) / "new");
    if (::fsync(parent.get()) != 0 || !update || !markStaged(work.get(), *update))
        throw installFailure(errno, root, "note what is staged");
}

void TreeInstaller::checkUnchanged() const {
    const posix::FileDescriptor parentNow(
        ::open(root.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const posix::FileDescriptor now = openFolder(parentNow.get(), root.filename());
    if (!now || !isSame(parent.get(), parentNow.get()) || !isSame(tree.get(), now.get()))
        throw folderChanged(root);
    if (const auto file = foreignFile(root))
        throw folderHoldsOtherFiles(root, *file);
}

void TreeInstaller::discard() noexcept {
    if (begun && work)
        removeTree(parent.get(), workFolderName(root));
    begun = false;
    work = posix::FileDescriptor();
}

} // namespace kelo::updater
