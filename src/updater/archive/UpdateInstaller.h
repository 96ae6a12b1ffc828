#pragma once

#include "base/async/Task.h"
#include "updater/archive/VerifiedArchive.h"

namespace kelo::updater {

/// What "install" means for a release on this computer.
enum class InstallKind {
    /// The user owns the installed copy: it is exchanged for the new one.
    replaceInPlace,
    /// A package manager owns it, and the archive is a package: the system's own installer opens
    /// the verified package.
    handToPackageManager,
    /// Neither: the item's link is opened, and nothing is downloaded.
    informationalOnly,
};

/// Puts verified archives in place. Failures are UpdateErrors of kind installing (or storage, for a
/// full disk) and leave a program that starts. Main thread only; what blocks runs elsewhere.
class UpdateInstaller {
public:
    virtual ~UpdateInstaller() = default;

    /// Quick, and without a side effect. The item has an enclosure.
    virtual InstallKind kind(const AppcastItem& item) const = 0;

    /// replaceInPlace: unpacks and stages the new copy beside the installed one, which is not
    /// touched yet. handToPackageManager: keeps the package until it is handed over. Takes the
    /// place of what was prepared before. The archive's descriptor is what was verified.
    virtual Task<void> prepare(VerifiedArchive archive) = 0;

    /// After prepare(). replaceInPlace: exchanges the two copies, starts the new one and has this
    /// process end. handToPackageManager: opens the system's installer with the package and ends;
    /// this process goes on.
    virtual Task<void> installAndRelaunch() = 0;
};

} // namespace kelo::updater
