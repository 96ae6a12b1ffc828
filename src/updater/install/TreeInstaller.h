#pragma once

#include "posix/FileDescriptor.h"
#include "updater/install/ArchiveReader.h"
#include "updater/tree/TreeExchange.h"

#include <chrono>
#include <filesystem>
#include <string>

namespace kelo::updater {

/// Replaces an installed tree that the user owns. Calls block, and throw an UpdateError that leaves
/// the installed tree unchanged. Any thread, but one call at a time.
///
/// If this process is killed at any moment, the installed program still starts: see
/// exchangeTrees(). Its next start repairs what is left beside the tree, and takes a staged update
/// over (InstallRecovery.h).
class TreeInstaller {
public:
    /// The root is the folder above the running program's bin.
    explicit TreeInstaller(std::filesystem::path root, ExchangeCalls calls = {},
                           ArchiveLimits limits = {});
    /// A staged tree stays, for the next start.
    ~TreeInstaller();
    TreeInstaller(const TreeInstaller&) = delete;
    TreeInstaller& operator=(const TreeInstaller&) = delete;

    /// Unpacks the archive beside the installed tree. Checks that it has that version and that its
    /// program starts on this computer. Replaces a tree that was staged before; fails once one has
    /// been installed.
    void stage(int archive, const std::string& version);

    /// Installs the staged tree. The old one is kept until a start of the new program was
    /// confirmed.
    void install();

    /// The program of the installed tree.
    std::filesystem::path program() const { return root / "bin" / "kelo"; }

    /// How long the staged program may take to print its help.
    static constexpr std::chrono::seconds probeDeadline{30};

private:
    void openPlace();
    void makeWorkFolder();
    void checkStaged(const std::string& version) const;
    void noteStaged();
    void checkUnchanged() const;
    void discard() noexcept;

    std::filesystem::path root;
    ExchangeCalls calls;
    ArchiveLimits limits;
    posix::FileDescriptor parent;
    posix::FileDescriptor tree; ///< the installed tree at the time of staging
    posix::FileDescriptor work; ///< locked, so that other processes do not use it
    bool begun = false;         ///< staging; true also when that is complete
    bool installed = false;
};

} // namespace kelo::updater
