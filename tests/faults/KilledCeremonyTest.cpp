// Kelo is killed at random instants of a registration and of a sign-in.
#include "faults/FaultFixture.h"
#include "faults/RandomKills.h"

#include <csignal>
#include <functional>
#include <iostream>

namespace kelo::faults {

namespace {

class KilledCeremony : public FaultFixture {
protected:
    using Clock = std::chrono::steady_clock;

    /// Goes a road again and again, from the login page or from the home page, and is killed at
    /// another instant each time. After each kill the next start must find the passkey.
    void killAtRandomInstants(const std::function<void()>& toTheBeginning,
                              const std::function<void()>& road) {
        RandomInstants instants(80);
        toTheBeginning();
        const auto begin = Clock::now();
        road();
        const auto length =
            std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
        int killed = 0;
        for (int number = 0; number < instants.count(); ++number) {
            const auto instant = instants.next(length);
            SCOPED_TRACE(instants.describe(number, instant));
            comeToTheLoginPage();
            toTheBeginning();
            killed += wasKilled(instant, road) ? 1 : 0;
            expectNothingIsLost();
            ASSERT_FALSE(HasFailure());
        }
        RecordProperty("killed", killed);
        std::cout << "Killed " << killed << " of " << instants.count() << " times within "
                  << length.count() / 1000 << " ms, seed " << instants.seed() << ".\n";
        EXPECT_GT(killed, instants.count() / 2);
    }

private:
    bool wasKilled(std::chrono::microseconds instant, const std::function<void()>& road) {
        desktop().tree.callOffWaitsWhen([this] { return !kelo->isRunning(); });
        try {
            const AfterAWhile killer(instant,
                                     [process = kelo->identifier()] { kill(process, SIGKILL); });
            road();
        } catch (const rig::CalledOff&) {
        }
        const bool killed = !kelo->isRunning();
        desktop().tree.callOffWaitsWhen({});
        return killed;
    }
};

} // namespace

TEST_F(KilledCeremony, ASignInKilledAtAnyInstantLosesNothing) {
    killAtRandomInstants([] {}, [this] { signIn(); });
}

TEST_F(KilledCeremony, ARegistrationKilledAtAnyInstantLosesNothing) {
    killAtRandomInstants([this] { signIn(); },
                         [this] {
                             registerPerson(e2e::ada);
                             user.awaitSignedIn(e2e::ada.firstName);
                         });
}

} // namespace kelo::faults
