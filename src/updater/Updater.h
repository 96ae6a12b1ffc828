#pragma once

#include "base/async/MainLoop.h"
#include "base/async/RunningTask.h"
#include "base/async/Task.h"
#include "platform/StandardUpdaterController.h"
#include "updater/UpdaterContext.h"

#include <chrono>
#include <memory>
#include <optional>

namespace kelo::updater {

class UpdateCheck;

/// Finds, downloads, verifies and installs releases. Runs one check at a time: when the user asks
/// for one, and, if automatic checks are enabled, once per interval. An automatic check that fails
/// is made again after an hour, or when the network comes. Main thread only. Destroying
/// the updater drops a running check; do not destroy it inside a call that it makes.
class Updater : public platform::StandardUpdaterController {
public:
    /// Removes unfinished downloads of earlier runs. Schedules no check before start().
    explicit Updater(UpdaterContext context);
    ~Updater() override;
    Updater(const Updater&) = delete;
    Updater& operator=(const Updater&) = delete;

    /// Starts automatic checks if they are enabled. An overdue check runs in the next turn of the
    /// main loop.
    void start();

    /// Starts a check and shows its outcome, failures included. If a check is running already, its
    /// window comes to the front instead; a check without windows shows them from then on.
    void checkForUpdates() override;

private:
    void begin(CheckKind kind);
    Task<void> run(CheckKind kind);
    Task<void> showNotSetUp();
    Task<void> check(CheckKind kind);
    Task<void> askForAutomaticChecks();

    bool checksAutomatically() const;
    std::chrono::seconds untilDue();
    void networkCame();
    void schedule();

    UpdaterContext context;
    std::unique_ptr<UpdateCheck> current;
    bool started = false;
    bool active = false;
    /// After a check that failed: not before then.
    std::optional<std::chrono::sys_seconds> retry;
    std::shared_ptr<Timer> timer;
    RunningTask running;
};

} // namespace kelo::updater
