#pragma once

#include "base/async/MainLoop.h"
#include "base/async/RunningTask.h"
#include "updater/UpdateCheck.h"
#include "updater/UpdaterMemory.h"
#include "updater/UpdaterParts.h"

#include <chrono>
#include <memory>
#include <optional>

namespace kelo::updater {

/// Finds, fetches, verifies and installs releases, one check at a time: those the user asks for,
/// and, where they are wanted, one each interval. Main thread only. A check that is under way when
/// the updater goes is dropped; the updater must not go inside a call to one of its parts.
class Updater {
public:
    /// Removes what a former run has left half done. Makes no check by itself before start().
    explicit Updater(UpdaterParts parts);
    ~Updater();
    Updater(const Updater&) = delete;
    Updater& operator=(const Updater&) = delete;

    /// Begins with automatic checks, if they are wanted; an overdue one is made in the next turn of
    /// the main loop.
    void start();

    /// The user asks. What comes of it is shown, failures included. While a check is under way its
    /// window comes to the front; one that was made in silence goes on before the user's eyes.
    void checkForUpdates();

private:
    void begin(CheckKind kind);
    Task<void> run(CheckKind kind);
    Task<void> sayNotSetUp();
    Task<void> check(CheckKind kind);
    Task<void> askForAutomaticChecks();

    bool checksAutomatically() const;
    std::chrono::seconds untilDue();
    void schedule();

    UpdaterMemory memory;
    std::unique_ptr<UpdateCheck> current;
    bool started = false;
    bool active = false;
    std::shared_ptr<Timer> timer;
    std::optional<RunningTask> running;
};

} // namespace kelo::updater
