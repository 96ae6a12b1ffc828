#pragma once

#include "posix/FileDescriptor.h"
#include "updater/tree/TreeExchange.h"

#include <filesystem>
#include <optional>
#include <string>

namespace kelo::updater {

class WorkFolder;

/// A version of the program.
struct TreeUpdate {
    std::string version;      ///< CFBundleVersion
    std::string shownVersion; ///< CFBundleShortVersionString
};

/// A program's start, as far as updates of its own tree go. The root is the tree that it runs from;
/// what an update has left is in the work folder beside it.
///
///   An exchange that was cut off   is undone.
///   An update that is staged       takes the program's place.
///   An update on trial             gets the trial: it stays once a start of it was confirmed. The
///                                  second start without that puts the tree before it back.
///
/// Make it before anything in the tree is read. It does nothing if the work folder is missing or
/// locked by a running process. Nothing here ever fails. Calls block while files are moved or
/// removed; main thread only.
class TreeStart {
public:
    explicit TreeStart(std::filesystem::path root, ExchangeCalls calls = {}) noexcept;
    TreeStart(TreeStart&&) noexcept = default;

    enum class Replacement {
        none,
        byUpdate,     ///< by the staged one
        byTreeBefore, ///< by the one before an update that did not start
    };
    /// Whether the tree is another one now, so that its program is to be run instead of this one.
    Replacement replacement() const { return replaced; }

    /// The update that was taken back because it did not start.
    const std::optional<TreeUpdate>& failedUpdate() const { return failed; }

    /// This start went well: removes what is left beside the tree, except a staged update.
    void confirm() noexcept;
    /// This process ends and has shown nothing, neither that the update works nor that it does not.
    void setAside() noexcept;

private:
    void look();
    void beginTrial(const WorkFolder& work);

    std::filesystem::path root;
    ExchangeCalls calls;
    Replacement replaced = Replacement::none;
    std::optional<TreeUpdate> failed;
    /// Locked as long as this process is on trial.
    posix::FileDescriptor trial;
};

/// Removes what is left beside the tree. An update that is staged stays if it is to be kept. Does
/// nothing if the work folder is missing or locked. Never fails. Blocks.
enum class StagedUpdate { keep, remove };
void clearWorkFolder(const std::filesystem::path& root, StagedUpdate staged,
                     const ExchangeCalls& calls = {}) noexcept;

} // namespace kelo::updater
