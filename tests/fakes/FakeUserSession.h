#pragma once

#include "platform/UserSession.h"

#include <functional>
#include <utility>

namespace kelo::fakes {

/// A session that a test locks and unlocks.
class FakeUserSession final : public platform::UserSession {
public:
    void performUnlessLocked(std::function<void()> action) override {
        ++questions;
        if (isUncertain)
            waiting = std::move(action);
        else if (!isLocked)
            action();
    }
    Observation observeLocking(std::function<void()> handler) override {
        ++observations;
        auto observation = locking.observe(std::move(handler));
        return Observation([this, held = std::make_shared<Observation>(std::move(observation))] {
            *held = Observation();
            --observations;
        });
    }

    void lock() {
        isLocked = true;
        locking.objectWillChange();
    }
    void unlock() { isLocked = false; }
    /// The answer that was not certain turns out to be "unlocked".
    void becomeCertain() {
        isUncertain = false;
        if (const auto action = std::exchange(waiting, nullptr))
            action();
    }

    bool isLocked = false;
    bool isUncertain = false;
    int questions = 0;
    /// How many observations exist.
    int observations = 0;

private:
    std::function<void()> waiting;
    ObservableObject locking;
};

} // namespace kelo::fakes
