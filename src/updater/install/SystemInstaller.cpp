#include "updater/install/SystemInstaller.h"

#include "base/Translation.h"
#include "updater/appcast/Version.h"
#include "updater/archive/Download.h"
#include "updater/files/InstallFailure.h"
#include "updater/install/DebianPackage.h"
#include "updater/install/TreeInstaller.h"
#include "updater/tree/ProgramStart.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <utility>

namespace kelo::updater {

namespace {

constexpr std::chrono::seconds openerDeadline{10};
constexpr const char* packageName = "kelo";

bool isTreeArchive(std::string_view fileName) {
    constexpr std::array<std::string_view, 4> endings{".tar.zst", ".tar.xz", ".tar.gz", ".tgz"};
    return std::ranges::any_of(endings,
                               [&](std::string_view end) { return fileName.ends_with(end); });
}

bool isPackage(std::string_view fileName) {
    return fileName.ends_with(".deb");
}

/// Other distributions cannot install Debian's packages.
bool systemTakesPackages() {
    std::error_code failure;
    return std::filesystem::exists("/usr/bin/dpkg", failure);
}

/// Whether the package's name says that it is for another release of the system: its libraries are
/// not there. A name in which nothing follows the version says nothing.
bool isForAnotherSystem(const AppcastItem& item, const std::string& system) {
    const std::string name = fileNameOf(item.enclosure->url);
    const std::string start = "kelo-" + item.displayVersion() + "~";
    const std::string ours = start + system;
    // The processor may follow the system.
    const bool isOurs = name == ours + ".deb" || name.starts_with(ours + "-");
    return !system.empty() && name.starts_with(start) && !isOurs;
}

std::filesystem::path packagePath(const VerifiedArchive& archive) {
    return archive.folder() / archive.fileName();
}

/// Whether the file name still refers to the verified file.
bool isVerifiedFile(const VerifiedArchive& archive) {
    struct stat verified {};
    struct stat named {};
    return ::fstat(archive.descriptor(), &verified) == 0 &&
           ::lstat(packagePath(archive).c_str(), &named) == 0 && verified.st_dev == named.st_dev &&
           verified.st_ino == named.st_ino;
}

// The signature does not cover what the feed says of the package, so an old one could be announced
// as a new one.
void checkPackage(const VerifiedArchive& archive, const std::string& architecture) {
    const DebianPackage found = readDebianPackage(archive.descriptor());
    if (found.name == packageName && found.architecture == architecture &&
        compareVersions(found.version, archive.item().version) == 0)
        return;
    throw UpdateError(
        UpdateErrorKind::installing,
        translated("The package is not the one that was announced, so it was not opened. Tell its "
                   "publisher; your version keeps working."),
        "it is " + found.name + " " + found.version + " for " + found.architecture + ", not " +
            packageName + " " + archive.item().version + " for " + architecture);
}

} // namespace

SystemInstaller::SystemInstaller(InstalledCopy copy, Worker& worker, InstallerHost host)
    : copy(std::move(copy)), worker(worker), host(std::move(host)) {}

InstallKind SystemInstaller::kind(const AppcastItem& item) const {
    const std::string path = item.enclosure ? item.enclosure->url.path() : std::string();
    if (copy.owner == CopyOwner::user && isTreeArchive(path))
        return InstallKind::replaceInPlace;
    if (copy.owner == CopyOwner::packageManager && isPackage(path) && systemTakesPackages() &&
        !isForAnotherSystem(item, host.system))
        return InstallKind::handToPackageManager;
    return InstallKind::informationalOnly;
}

std::string SystemInstaller::obstacle() const {
    if (copy.strayFile.empty())
        return {};
    return translated("The folder “%1” contains a file that is not Kelo's, “%2”. Move it elsewhere "
                      "and start Kelo again.",
                      {copy.root.string(), copy.strayFile});
}

Task<void> SystemInstaller::prepare(VerifiedArchive archive) {
    const auto shared = std::make_shared<const VerifiedArchive>(std::move(archive));
    package.reset();
    switch (kind(shared->item())) {
    case InstallKind::handToPackageManager: {
        const auto check = [shared, architecture = host.architecture] {
            checkPackage(*shared, architecture);
        };
        co_await onWorker(worker, check);
        package = shared;
        co_return;
    }
    case InstallKind::informationalOnly:
        throw unfitArchive("this copy cannot be replaced with it");
    case InstallKind::replaceInPlace:
        break;
    }
    if (!tree)
        tree = std::make_shared<TreeInstaller>(copy.root);
    const auto stage = [staging = tree, shared] {
        staging->stage(shared->descriptor(), shared->item().version);
    };
    co_await onWorker(worker, stage);
}

Task<void> SystemInstaller::installAndRelaunch() {
    if (package)
        co_await handToPackageManager();
    else
        co_await exchangeAndRelaunch();
}

Task<void> SystemInstaller::exchangeAndRelaunch() {
    if (!tree)
        throw unfitArchive("nothing was prepared");
    // Opened now: it is the present tree's, which the exchange moves away.
    const posix::FileDescriptor watcher = openStartWatcher(copy.root);
    const auto install = [installing = tree] { installing->install(); };
    co_await onWorker(worker, install);
    if (!relaunchWatched(watcher, copy.root, host.environment()))
        throw UpdateError(
            UpdateErrorKind::installing,
            translated("The update is in place. Quit Kelo and start it again to use it."),
            "the new program could not be told to start");
    host.terminate();
}

Task<void> SystemInstaller::handToPackageManager() {
    const auto handed = package;
    if (!isVerifiedFile(*handed))
        throw UpdateError(
            UpdateErrorKind::installing,
            translated("The package was changed after it had been verified, so it was not "
                       "opened. Check for updates again."));
    const std::string path = packagePath(*handed);
    const auto open = [opener = host.opener, path] {
        return opensFile(opener, path, openerDeadline);
    };
    const bool opened = co_await onWorker(worker, open);
    if (!opened)
        throw UpdateError(
            UpdateErrorKind::installing,
            translated("No program was found that installs packages. While Kelo runs, the verified "
                       "package is “%1”: install it with your system's own tools.",
                       {path}));
}

} // namespace kelo::updater
