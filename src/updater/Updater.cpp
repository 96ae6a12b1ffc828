#include "updater/Updater.h"

#include "updater/UpdateTexts.h"

#include <algorithm>
#include <utility>

namespace kelo::updater {

namespace {

/// From which check on the user is asked whether to check automatically.
constexpr std::uint32_t checksBeforeAsking = 2;

/// A timer does not count the time that the computer sleeps, so look at the clock now and then.
constexpr std::chrono::seconds longestWait = std::chrono::hours(1);

} // namespace

Updater::Updater(UpdaterParts parts) : memory(std::move(parts)) {
    memory.parts.worker.perform(
        [folder = memory.parts.downloads] { PrivateFolder::removeLeftovers(folder); });
}

Updater::~Updater() {
    if (timer)
        timer->invalidate();
    running.reset();
}

void Updater::start() {
    started = true;
    schedule();
}

void Updater::checkForUpdates() {
    if (!active)
        begin(CheckKind::userInitiated);
    else if (current)
        current->bringToUser();
    else if (memory.hasUserDriver())
        memory.userDriver().bringToFront();
}

void Updater::begin(CheckKind kind) {
    active = true;
    running.reset();
    running.emplace(run(kind));
}

Task<void> Updater::run(CheckKind kind) {
    if (memory.parts.settings.isSetUp())
        co_await check(kind);
    else
        co_await sayNotSetUp();
    active = false;
    schedule();
}

Task<void> Updater::sayNotSetUp() {
    const UpdateMessage message = notSetUpMessage(memory.parts.settings);
    co_await memory.userDriver().showMessage(message.heading, message.sentence);
    memory.userDriver().dismiss();
}

Task<void> Updater::check(CheckKind kind) {
    memory.state.lastCheck = memory.now();
    memory.state.checkCount = std::max(memory.state.checkCount, memory.state.checkCount + 1);
    current = std::make_unique<UpdateCheck>(memory, kind);
    co_await current->run();
    current.reset();
    co_await askForAutomaticChecks();
}

Task<void> Updater::askForAutomaticChecks() {
    const UpdaterSettings& settings = memory.parts.settings;
    const bool decided = settings.automaticChecks || memory.state.automaticChecks ||
                         settings.checkInterval == std::chrono::seconds(0);
    if (decided || memory.state.checkCount < checksBeforeAsking)
        co_return;
    const bool answer = co_await memory.userDriver().askForAutomaticChecks(settings.programName);
    memory.state.automaticChecks = answer;
    memory.userDriver().dismiss();
    co_await memory.save();
}

bool Updater::checksAutomatically() const {
    const UpdaterSettings& settings = memory.parts.settings;
    const bool wanted =
        settings.automaticChecks.value_or(memory.state.automaticChecks.value_or(false));
    return wanted && settings.isSetUp() && settings.checkInterval > std::chrono::seconds(0);
}

std::chrono::seconds Updater::untilDue() {
    const auto now = memory.now();
    auto& last = memory.state.lastCheck;
    // The clock was set back: the next check must not be years away.
    if (last && *last > now)
        last = now;
    return last ? *last + memory.parts.settings.checkInterval - now : std::chrono::seconds(0);
}

void Updater::schedule() {
    if (timer)
        timer->invalidate();
    timer.reset();
    if (!started || !checksAutomatically())
        return;
    const auto wait = std::clamp(untilDue(), std::chrono::seconds(0), longestWait);
    timer = MainLoop::main().scheduleTimer(wait, [this] {
        if (active)
            return; // scheduled anew at its end
        if (untilDue() > std::chrono::seconds(0))
            schedule();
        else
            begin(CheckKind::scheduled);
    });
}

} // namespace kelo::updater
