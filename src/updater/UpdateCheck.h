#pragma once

#include "base/async/Cancellation.h"
#include "base/async/Task.h"
#include "updater/UpdateSelection.h"
#include "updater/UpdaterMemory.h"
#include "updater/appcast/Appcast.h"
#include "updater/driver/UserDriver.h"

#include <exception>
#include <functional>

namespace kelo::updater {

/// One check, from the feed to the relaunch. Must outlive its run. Main thread only.
class UpdateCheck {
public:
    /// A feed must be set up. The memory must outlive the check.
    UpdateCheck(UpdaterMemory& memory, CheckKind kind);

    /// Runs once. Tells the user what is to be told, failures included; never fails.
    Task<void> run();

    /// The user asks while the check is under way: what has happened in silence so far goes on
    /// before their eyes, and in front.
    void bringToUser();

private:
    enum class Stage {
        checking,
        downloading,
        preparing,
        asking, ///< the window that is open has its own words
    };

    UserDriver& driver() { return memory.userDriver(); }
    void enter(Stage next);
    void showStage();
    std::function<void()> canceller() const;
    template <typename T>
    Task<T> unlessCancelled(Task<T> task);

    Task<void> goThrough();
    Task<Appcast> readFeed();
    SelectionRules rules() const;
    Task<void> sayNothingNew(Selection selection);
    Task<void> offer(SelectedUpdate update);
    InstallKind installKind(const SelectedUpdate& update) const;
    bool goesAheadUnasked(const SelectedUpdate& update, InstallKind how) const;
    Task<ReleaseNotes> notesOf(AppcastItem item);
    Task<void> openInformation(AppcastItem item);
    Task<void> install(AppcastItem item, UpdateOffer offer, InstallKind how);
    Task<void> putInPlace(AppcastItem item, UpdateOffer offer, InstallKind how);
    Task<void> report(std::exception_ptr error);

    UpdaterMemory& memory;
    CheckKind kind;
    /// The user has asked, or has answered: what happens is shown.
    bool visible;
    Stage stage = Stage::checking;
    DownloadProgress progress;
    Cancellation cancellation;
};

} // namespace kelo::updater
