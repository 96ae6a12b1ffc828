// All copies of Kelo are killed at random instants of an update.
#include "e2e/UpdateProgramFixture.h"
#include "faults/RandomKills.h"

#include <atomic>
#include <csignal>
#include <iostream>
#include <map>

namespace kelo::faults {

namespace {

class KilledUpdate : public e2e::UpdateProgramFixture {
protected:
    using Clock = std::chrono::steady_clock;

    void TearDown() override {
        desktop().tree.callOffWaitsWhen({});
        UpdateProgramFixture::TearDown();
    }

    void update() {
        exitStatusOf("--check-for-updates"); // it may be killed, too
        awaitText("A new version of Kelo is available");
        choose("Install Update");
        awaitText("The update is ready");
        choose("Install and Relaunch");
        program->awaitExit(rig::deadline);
        user.awaitLoginPage();
    }

    void startOldVersion() {
        endCopies();
        endKelo();
        reinstall();
        startInstalled();
        user.awaitLoginPage();
    }

    bool wasKilled(std::chrono::microseconds instant) {
        std::atomic<bool> killed = false;
        desktop().tree.callOffWaitsWhen([&] { return killed.load(); });
        try {
            const AfterAWhile killer(instant, [&] {
                // The one that is killed may have begun to start another.
                for (auto copies = runningCopies(); !copies.empty(); copies = runningCopies()) {
                    for (const pid_t copy : copies)
                        kill(copy, SIGKILL);
                    program->isRunning();
                }
                killed = true;
            });
            update();
        } catch (const rig::CalledOff&) {
        }
        desktop().tree.callOffWaitsWhen({});
        return killed;
    }
};

} // namespace

TEST_F(KilledUpdate, AtAnyInstantLeavesAWholeProgram) {
    RandomInstants instants(40);
    publish();
    startOldVersion();
    const auto begin = Clock::now();
    update();
    const auto length = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
    std::map<std::string, int> versions;
    int killed = 0;
    for (int number = 0; number < instants.count(); ++number) {
        const auto instant = instants.next(length);
        SCOPED_TRACE(instants.describe(number, instant));
        startOldVersion();
        killed += wasKilled(instant) ? 1 : 0;
        endCopies(); // of an update that was quicker than the kill
        endKelo();
        startInstalled();
        user.awaitLoginPage();
        ++versions[installedVersion()];
        awaitThat("nothing else is left in the home",
                  [&] { return homeContents() == std::vector<std::string>{"Kelo"}; });
        ASSERT_FALSE(HasFailure());
    }
    std::cout << "Killed " << killed << " of " << instants.count() << " times within "
              << length.count() / 1000 << " ms, seed " << instants.seed() << "; afterwards "
              << versions["1.0"] << " were old and " << versions["1.1"] << " new.\n";
    EXPECT_EQ(versions["1.0"] + versions["1.1"], instants.count());
    EXPECT_GT(killed, instants.count() / 2);
}

} // namespace kelo::faults
