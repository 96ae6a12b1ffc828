#pragma once

#include "component/ScopedMainLoop.h"

#include "fakes/authenticator/FakePasskeySheet.h"
#include "linux/authorization/verification/PamVerifier.h"
#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo {

/// A verifier, a person before its conversation, and a way to see that the helper is gone.
class VerificationFixture : public testing::Test {
protected:
    using Outcome = authenticator::VerificationOutcome;

    VerificationFixture() {
        // Wrong use of GLib is a failure, too.
        g_log_set_always_fatal(
            static_cast<GLogLevelFlags>(G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL));
        ::mkfifo(fifo.c_str(), 0600);
    }

    /// What a helper built with a sanitizer needs: its process cannot be traced for leaks.
    static std::vector<std::string> forSanitizers() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        return {"ASAN_OPTIONS=detect_leaks=0"};
#else
        return {};
#endif
    }

    static Task<void> record(std::optional<Outcome>& outcome, Task<Outcome> task) {
        outcome = co_await task;
    }
    void start(authorization::PamVerifier& verifier) {
        outcome.reset();
        spawn(record(outcome, verifier.verify(sheet)));
    }
    Outcome verify(authorization::PamVerifier& verifier) {
        start(verifier);
        EXPECT_TRUE(ScopedMainLoop::runUntil([this] { return outcome.has_value(); }));
        return outcome.value_or(Outcome::failed);
    }
    bool waitForWords(std::size_t count) {
        return ScopedMainLoop::runUntil([&] { return person.words.size() >= count || outcome; });
    }

    /// Opens the end of the FIFO that a helper holds open as long as it lives.
    int openLifeline() const {
        return ::open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    }
    /// Whether the helper that holds the other end comes to its end.
    static bool endsWhenHelperDies(int lifeline) {
        pollfd watched{lifeline, 0, 0};
        return ::poll(&watched, 1, 60'000) == 1 && (watched.revents & POLLHUP) != 0;
    }

    ScopedMainLoop loop;
    test::TemporaryFolder folder;
    std::string fifo = folder.path() / "lifeline";
    fakes::SheetScript person;
    fakes::FakePasskeySheet sheet{person};
    std::optional<Outcome> outcome;
};

} // namespace kelo
