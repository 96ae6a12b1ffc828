#pragma once

#include "base/async/Worker.h"
#include "updater/archive/UpdateInstaller.h"
#include "updater/tree/InstalledCopy.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::updater {

class TreeInstaller;

/// What the program supplies to the installer.
struct InstallerHost {
    /// Ends this process in an orderly way; the new program starts once it has ended. Called on the
    /// main thread.
    std::function<void()> terminate;
    /// The environment of the new program (NAME=value): this process's own, without the variables
    /// that it set for itself.
    std::function<std::vector<std::string>()> environment;
    /// The system's name as the names of packages end with it, for instance "deb13"; empty if it is
    /// unknown.
    std::string system = "";
    /// The processor's name as packages have it: "amd64", "arm64"...
    std::string architecture = "";
    /// Program that opens a file with the user's program for its type.
    std::string opener = "xdg-open";
};

/// Installs updates of the running copy. Exchanges a tree that the user owns, hands a package to
/// the system's installer, and changes nothing else. Never writes below /usr.
class SystemInstaller final : public UpdateInstaller {
public:
    /// The worker, and everything that the host's functions refer to, must outlive it.
    SystemInstaller(InstalledCopy copy, Worker& worker, InstallerHost host);

    InstallKind kind(const AppcastItem& item) const override;
    std::string obstacle() const override;
    Task<void> prepare(VerifiedArchive archive) override;
    Task<void> installAndRelaunch() override;

private:
    Task<void> exchangeAndRelaunch();
    Task<void> handToPackageManager();

    InstalledCopy copy;
    Worker& worker;
    InstallerHost host;
    /// Shared with jobs on the worker.
    std::shared_ptr<TreeInstaller> tree;
    /// Kept until the next update or the process's end, because the system's installer reads it.
    std::shared_ptr<const VerifiedArchive> package;
};

} // namespace kelo::updater
