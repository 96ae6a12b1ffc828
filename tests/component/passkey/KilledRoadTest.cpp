// A program with the whole authenticator is killed in the middle of a registration.
#include "RoadFixture.h"

#include "faults/RandomKills.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <random>

namespace kelo {

namespace {

using authenticator::KeyKeeper;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kills = 10; // a program takes ten times as long to start
#else
constexpr int kills = 100;
#endif

class KilledRoad : public RoadFixture {
protected:
    using Clock = std::chrono::steady_clock;

    void SetUp() override {
        if (std::filesystem::exists("/etc/pam.d/kelo"))
            GTEST_SKIP() << "Kelo is installed here, and its PAM service goes before the test's.";
        expectRegistration("first");
    }

    /// Expects that nothing is lost but perhaps the passkey that was not finished, and that the
    /// next one works. Notes whether the killed program had saved its own.
    void expectWholeAfterKill() {
        chip.forgetLeftovers();
        const std::size_t now = passkeys.all().size();
        ASSERT_GE(now, before);
        ASSERT_LE(now, before + 1);
        finished += static_cast<int>(now - before);
        expectRegistration("after" + std::to_string(now));
        before = passkeys.all().size();
        ASSERT_EQ(before, now + 1);
        for (const auto& record : passkeys.all())
            ASSERT_EQ(record.keeper, KeyKeeper::chip);
    }

    std::size_t before = 1;
    int finished = 0;
};

} // namespace

TEST_F(KilledRoad, KillAtAnyMessageToOrFromTheChipLosesNothing) {
    int message = 0;
    for (bool killed = true; killed; ++message) {
        const Child program = start({"KELO_KILLED_AT_EXCHANGE=" + std::to_string(message)});
        ask(program, "register", "killed" + std::to_string(message));
        killed = answer(program).is_null();
        SCOPED_TRACE("killed at message " + std::to_string(message));
        expectWholeAfterKill();
        ASSERT_FALSE(HasFatalFailure());
    }
    std::cout << "A registration has " << message - 1 << " messages to and from the chip.\n";
    EXPECT_GT(message, 10);
    EXPECT_EQ(finished, 1) << "the one that was not killed";
    expectAllSign();
}

TEST_F(KilledRoad, KillAtAnyInstantAfterTheUserHasAgreedLosesNothing) {
    std::vector<Clock::duration> lengths;
    for (const std::string account : {"one", "two", "three", "four", "five"}) {
        const Child whole = start();
        ask(whole, "register", account);
        whole.readLine();
        const auto begin = Clock::now();
        ASSERT_FALSE(answer(whole).is_null());
        lengths.push_back(Clock::now() - begin);
    }
    std::ranges::sort(lengths);
    const Clock::duration length = lengths[2];
    before = passkeys.all().size();

    std::mt19937 random(20261123); // NOLINT: the same parts of it in each run
    std::uniform_real_distribution<double> any(0, 1.2);
    int killed = 0;
    for (int number = 0; number < kills; ++number) {
        SCOPED_TRACE(number);
        const Child program = start();
        ask(program, "register", "killed" + std::to_string(number));
        ASSERT_EQ(program.readLine(), "asked");
        {
            const faults::AfterAWhile killer(
                std::chrono::duration_cast<std::chrono::microseconds>(length * any(random)),
                [&program] { program.kill(); });
            killed += answer(program).is_null() ? 1 : 0;
        }
        expectWholeAfterKill();
        ASSERT_FALSE(HasFatalFailure());
    }
    std::cout << "Killed " << killed << " of " << kills << " times within "
              << std::chrono::duration_cast<std::chrono::milliseconds>(length).count() << " ms; "
              << finished << " passkeys were saved.\n";
    EXPECT_GT(killed, 0);
    expectAllSign();
}

} // namespace kelo
