#include "updater/UpdaterContext.h"

namespace kelo::updater {

void UpdaterContext::loadState() {
    state = store->load();
    // A date in the future means that the clock was wrong at one of the two moments. Without this
    // the next check could be years away.
    if (state.lastCheck && *state.lastCheck > now())
        state.lastCheck = now();
    if (!state.rolloutNumber)
        state.rolloutNumber = randomNumber();
}

Task<void> UpdaterContext::saveState() {
    auto job = [store = store, state = state] { store->save(state); };
    co_await onWorker(worker, std::move(job));
}

UserDriver& UpdaterContext::userDriver() {
    if (!driver)
        driver = makeUserDriver();
    return *driver;
}

std::chrono::sys_seconds UpdaterContext::now() const {
    return std::chrono::floor<std::chrono::seconds>(clock.now());
}

} // namespace kelo::updater
