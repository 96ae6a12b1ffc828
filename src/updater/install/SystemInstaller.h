#pragma once

#include "base/async/Worker.h"
#include "updater/archive/UpdateInstaller.h"
#include "updater/install/InstalledCopy.h"
#include "updater/install/TreeInstaller.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::updater {

/// What the installer needs of the program around it.
struct InstallerHost {
    /// Ends this process in good order. Called on the main thread, after the new program was told
    /// to start as soon as this one has ended.
    std::function<void()> terminate;
    /// For the new program, NAME=value: this process's environment without what it set for itself.
    std::function<std::vector<std::string>()> environment;
    /// Opens a file with the program that the user has for its kind.
    std::string opener = "xdg-open";
};

/// Installs updates of the copy that is running: exchanges a tree that the user owns, hands a
/// package to the system's own installer, and leaves everything else alone. Never writes below
/// /usr.
class SystemInstaller final : public UpdateInstaller {
public:
    /// The worker and what the host refers to must outlive it.
    SystemInstaller(InstalledCopy copy, Worker& worker, InstallerHost host);

    InstallKind kind(const AppcastItem& item) const override;
    Task<void> prepare(VerifiedArchive archive) override;
    Task<void> installAndRelaunch() override;

private:
    Task<void> exchangeAndRelaunch();
    Task<void> handToPackageManager();

    InstalledCopy copy;
    Worker& worker;
    InstallerHost host;
    /// Shared with the work that is under way on the worker.
    std::shared_ptr<TreeInstaller> tree;
    /// Until the next update, or the process's end: the system's installer reads it.
    std::shared_ptr<const VerifiedArchive> package;
};

} // namespace kelo::updater
