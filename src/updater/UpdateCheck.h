#pragma once

#include "base/async/Cancellation.h"
#include "base/async/Task.h"
#include "updater/UpdateSelection.h"
#include "updater/UpdaterContext.h"
#include "updater/appcast/Appcast.h"
#include "updater/driver/UserDriver.h"

#include <exception>
#include <functional>

namespace kelo::updater {

/// One check, from the feed to the relaunch. Must outlive its run. Main thread only.
class UpdateCheck {
public:
    /// The settings must name a feed. The context must outlive the check.
    UpdateCheck(UpdaterContext& context, CheckKind kind);

    /// Runs once. Reports failures to the user or to the log; never throws.
    Task<void> run();

    /// Whether the feed was read. A check that could not read it counts for none.
    bool hasLooked() const { return looked; }

    /// Whether the program is about to end for the version that it was replaced by.
    bool isRelaunching() const { return relaunching; }

    /// Shows the check's window in front, and from then on treats the check as one that the user
    /// asked for.
    void bringToUser();

private:
    enum class Stage {
        checking,
        downloading,
        preparing,
        asking, ///< a question or a message is open
    };

    UserDriver& driver() { return context.userDriver(); }
    void enter(Stage next);
    void showStage();
    std::function<void()> canceller() const;
    template <typename T>
    Task<T> unlessCancelled(Task<T> task);

    Task<void> checkAndInstall();
    Task<Appcast> readFeed();
    SelectionRules rules() const;
    Task<void> showNothingNew(Selection selection);
    Task<Selection> lookForUpdate();
    Task<void> offer(SelectedUpdate update);
    Task<void> take(SelectedUpdate update, UpdateOffer offer, InstallKind how);
    Task<void> lookAgain(SelectedUpdate offered);
    InstallKind installKind(const SelectedUpdate& update) const;
    bool installsWithoutAsking(const SelectedUpdate& update, InstallKind how) const;
    Task<ReleaseNotes> notesOf(AppcastItem item);
    Task<void> openInformation(AppcastItem item);
    Task<void> install(AppcastItem item, UpdateOffer offer, InstallKind how);
    Task<void> putInPlace(AppcastItem item, UpdateOffer offer, InstallKind how);
    Task<void> report(std::exception_ptr error);

    UpdaterContext& context;
    CheckKind kind;
    /// Whether progress and failures are shown: the user asked for the check or answered it.
    bool visible;
    bool looked = false;
    bool relaunching = false;
    Stage stage = Stage::checking;
    DownloadProgress progress;
    Cancellation cancellation;
};

} // namespace kelo::updater
