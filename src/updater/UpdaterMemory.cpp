#include "updater/UpdaterMemory.h"

namespace kelo::updater {

UpdaterMemory::UpdaterMemory(UpdaterParts given)
    : parts(std::move(given)), state(parts.store->load()) {
    // The clock was wrong then or is wrong now; either way the next check must not be years away.
    if (state.lastCheck && *state.lastCheck > now())
        state.lastCheck = now();
    if (!state.rolloutNumber)
        state.rolloutNumber = parts.randomNumber();
}

UserDriver& UpdaterMemory::userDriver() {
    if (!driver)
        driver = parts.makeUserDriver();
    return *driver;
}

std::chrono::sys_seconds UpdaterMemory::now() const {
    return std::chrono::floor<std::chrono::seconds>(parts.clock.now());
}

Task<void> UpdaterMemory::save() {
    auto job = [store = parts.store, state = state] { store->save(state); };
    co_await onWorker(parts.worker, std::move(job));
}

} // namespace kelo::updater
