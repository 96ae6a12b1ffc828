#pragma once

#include "base/async/Task.h"
#include "updater/archive/VerifiedArchive.h"

#include <string>

namespace kelo::updater {

/// How a release is installed on this computer.
enum class InstallKind {
    /// The user owns the installed copy: it is replaced by the new one.
    replaceInPlace,
    /// A package manager owns the installed copy and the archive is a package: the system's
    /// installer
    /// opens the verified package.
    handToPackageManager,
    /// Neither: nothing is downloaded, and the item's link is opened.
    informationalOnly,
};

/// Installs verified archives. Throws UpdateErrors of kind installing (or storage, for a full
/// disk); the installed program still starts then. Main thread only; blocking work runs on a
/// worker.
class UpdateInstaller {
public:
    virtual ~UpdateInstaller() = default;

    /// Does not block and has no side effects. The item must have an enclosure.
    virtual InstallKind kind(const AppcastItem& item) const = 0;

    /// What the user can do so that updates of this copy can be installed, as a sentence; empty if
    /// nothing stands in the way, or nothing can be done about it.
    virtual std::string obstacle() const { return {}; }

    /// replaceInPlace: unpacks and stages the new copy beside the installed one, which stays
    /// untouched. handToPackageManager: keeps the package until it is handed over. Replaces what
    /// was prepared before. Reads only the archive's descriptor, because that is what was verified.
    virtual Task<void> prepare(VerifiedArchive archive) = 0;

    /// To be called after prepare(). replaceInPlace: exchanges the two copies, starts the new one
    /// and ends this process. handToPackageManager: opens the package with the system's installer;
    /// this process goes on.
    virtual Task<void> installAndRelaunch() = 0;
};

} // namespace kelo::updater
