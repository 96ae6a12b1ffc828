#include "updater/Updater.h"

#include "updater/UpdateCheck.h"
#include "updater/UpdateTexts.h"
#include "updater/archive/PrivateFolder.h"

#include <algorithm>
#include <utility>

namespace kelo::updater {

namespace {

/// After this many checks the user is asked whether to check automatically.
constexpr std::uint32_t checksBeforeAsking = 2;

/// A timer stands still while the computer sleeps, so the clock is read at least this often.
constexpr std::chrono::seconds longestWait = std::chrono::hours(1);

constexpr std::chrono::seconds retryInterval = std::chrono::hours(1);

/// Names are not looked up in the first moments of a network.
constexpr std::chrono::seconds networkSettles{10};

} // namespace

Updater::Updater(UpdaterContext given) : context(std::move(given)) {
    context.loadState();
    context.worker.perform(
        [folder = context.downloads] { PrivateFolder::removeLeftovers(folder); });
}

Updater::~Updater() {
    context.network.whenAvailable(nullptr);
    if (timer)
        timer->invalidate();
    running = RunningTask();
}

void Updater::start() {
    started = true;
    context.network.whenAvailable([this] { networkCame(); });
    schedule();
}

void Updater::checkForUpdates() {
    if (!active)
        begin(CheckKind::userInitiated);
    else if (current)
        current->bringToUser();
    else if (context.driver)
        context.userDriver().bringToFront();
}

void Updater::begin(CheckKind kind) {
    active = true;
    running = RunningTask(); // ends the last one before this one begins
    running = RunningTask(run(kind));
}

Task<void> Updater::run(CheckKind kind) {
    if (context.settings.isSetUp())
        co_await check(kind);
    else
        co_await showNotSetUp();
    active = false;
    schedule();
}

Task<void> Updater::showNotSetUp() {
    const UpdateMessage message = notSetUpMessage(context.settings);
    co_await context.userDriver().showMessage(message.heading, message.sentence);
    context.userDriver().dismiss();
}

Task<void> Updater::check(CheckKind kind) {
    current = std::make_unique<UpdateCheck>(context, kind);
    co_await current->run();
    const bool looked = current->hasLooked();
    const bool relaunching = current->isRelaunching();
    current.reset();
    if (!looked) {
        retry = context.now() + retryInterval;
        co_return;
    }
    retry.reset();
    if (!relaunching)
        co_await askForAutomaticChecks();
}

Task<void> Updater::askForAutomaticChecks() {
    const UpdaterSettings& settings = context.settings;
    const bool decided = settings.automaticChecks || context.state.automaticChecks ||
                         settings.checkInterval == std::chrono::seconds(0);
    if (decided || context.state.checkCount < checksBeforeAsking)
        co_return;
    const bool answer = co_await context.userDriver().askForAutomaticChecks(settings.programName);
    context.state.automaticChecks = answer;
    context.userDriver().dismiss();
    co_await context.saveState();
}

bool Updater::checksAutomatically() const {
    const UpdaterSettings& settings = context.settings;
    const bool wanted =
        settings.automaticChecks.value_or(context.state.automaticChecks.value_or(false));
    return wanted && settings.isSetUp() && settings.checkInterval > std::chrono::seconds(0);
}

std::chrono::seconds Updater::untilDue() {
    const auto now = context.now();
    auto& last = context.state.lastCheck;
    // The clock was set back. Without this the next check could be years away.
    if (last && *last > now)
        last = now;
    if (retry)
        retry = std::min(*retry, now + retryInterval);
    const auto regular = last ? *last + context.settings.checkInterval : now;
    return std::max(regular, retry.value_or(now)) - now;
}

void Updater::networkCame() {
    if (active || !retry)
        return;
    retry = std::min(*retry, context.now() + networkSettles);
    schedule();
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
            return; // the running check calls schedule() at its end
        if (untilDue() > std::chrono::seconds(0))
            schedule();
        else
            begin(CheckKind::scheduled);
    });
}

} // namespace kelo::updater
