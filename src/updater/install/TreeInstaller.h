#pragma once

#include "posix/FileDescriptor.h"
#include "updater/install/ArchiveReader.h"
#include "updater/install/TreeExchange.h"

#include <chrono>
#include <filesystem>
#include <string>

namespace kelo::updater {

/// Replaces an installed tree that the user owns. Calls block and fail with an UpdateError, which
/// leaves the installed tree as it was; any thread, one at a time.
///
/// At whatever instant a process that does this is killed, a program that starts is at its place:
/// see exchangeTrees(). What it leaves beside the tree is cleared up by the next start of that
/// program (InstallRecovery.h).
class TreeInstaller {
public:
    /// The tree's root: the folder above the running program's bin.
    explicit TreeInstaller(std::filesystem::path root, ExchangeCalls calls = {},
                           ArchiveLimits limits = {});
    /// A staged tree that was not installed is removed.
    ~TreeInstaller();
    TreeInstaller(const TreeInstaller&) = delete;
    TreeInstaller& operator=(const TreeInstaller&) = delete;

    /// Unpacks the archive beside the installed tree, and makes sure that it is a tree of that
    /// version whose program starts here. Takes the place of what was staged before; refused once
    /// one has been installed.
    void stage(int archive, const std::string& version);

    /// Puts the staged tree in place. The old one is kept until the new program has started.
    void install();

    /// Where the program of the installed tree is.
    std::filesystem::path program() const { return root / "bin" / "kelo"; }

    /// How long the staged program may take to print its help.
    static constexpr std::chrono::seconds probeDeadline{30};

private:
    void openPlace();
    void makeWorkFolder();
    void checkStaged(const std::string& version) const;
    void checkUnchanged() const;
    void discard() noexcept;

    std::filesystem::path root;
    ExchangeCalls calls;
    ArchiveLimits limits;
    posix::FileDescriptor parent;
    posix::FileDescriptor tree; ///< the installed one, as it was when the new one was staged
    posix::FileDescriptor work; ///< locked, so that another process leaves it alone
    bool staged = false;
    bool installed = false;
};

} // namespace kelo::updater
