#pragma once

#include "authenticator/AuthenticatorParts.h"
#include "base/Failure.h"
#include "base/async/Spawn.h"
#include "fakes/FakeMainLoop.h"
#include "fakes/authenticator/FakeKeyStore.h"
#include "fakes/authenticator/FakePasskeySheet.h"
#include "fakes/authenticator/FakeUserVerifier.h"
#include "testing/TemporaryFolder.h"

#include <array>
#include <deque>
#include <memory>
#include <optional>
#include <utility>

namespace kelo::fakes {

/// Runs each job where it is given.
class InlineWorker final : public Worker {
public:
    void perform(std::function<void()> job) override { job(); }
};

/// Keeps the jobs until the test runs them.
class HeldWorker final : public Worker {
public:
    void perform(std::function<void()> job) override { jobs.push_back(std::move(job)); }
    std::deque<std::function<void()>> jobs;
};

class FixedClock final : public Clock {
public:
    std::chrono::system_clock::time_point now() const override { return time; }
    std::chrono::system_clock::time_point time{std::chrono::seconds(1'700'000'000)};
};

/// How a task ended, if it did.
template <typename T>
struct Ended {
    std::optional<T> value;
    std::optional<Failure> error;
    bool pending() const { return !value && !error; }
};

template <typename T>
Task<void> record(std::shared_ptr<Ended<T>> ended, Task<T> task) {
    try {
        ended->value = co_await task;
    } catch (const Failure& error) {
        ended->error = error;
    }
}

/// An authenticator with its own main loop, fake user, keys and disk.
class ScopedAuthenticator {
public:
    ScopedAuthenticator() = default;
    ScopedAuthenticator(const ScopedAuthenticator&) = delete;
    ScopedAuthenticator& operator=(const ScopedAuthenticator&) = delete;
    ~ScopedAuthenticator() { dropSpawnedTasks(); }

    /// Starts a task and runs it until it waits for something.
    template <typename T>
    std::shared_ptr<Ended<T>> run(Task<T> task) {
        auto ended = std::make_shared<Ended<T>>();
        spawn(record(ended, std::move(task)));
        loop.runUntilIdle();
        return ended;
    }

    FakeMainLoop loop;
    MainLoop::Installation installation{loop};
    test::TemporaryFolder folder;
    SheetScript person;
    FakePasskeySheetFactory sheets{person};
    FakeUserVerifier verifier{person};
    FakeKeyStore keys{person};
    FakeChip chip{person};
    authenticator::KeyStores stores{keys, chip};
    authenticator::CredentialStore credentials{folder.path() / "kelo" / "passkeys.sqlite"};
    InlineWorker worker;
    FixedClock clock;
    std::array<authenticator::Association, 1> associations{
        authenticator::Association{"localhost", "https://localhost:8443"}};
    authenticator::AuthenticatorParts parts{associations, sheets, verifier, stores,
                                            credentials,  worker, clock};
};

} // namespace kelo::fakes
