// What follows from the answers of the parts, whatever the parts are.
#include "component/session/SessionFixture.h"
#include "fakes/FakeMainLoop.h"

#include <utility>

namespace kelo::test {

using namespace std::chrono_literals;

namespace {

struct Answers {
    bool certain = true;
    bool locked = false;
    bool grabbed = false;
    bool covered = false;
    int looks = 0;
    session::LockSource::Changed changed;
};

class Service final : public session::LockSource {
public:
    explicit Service(Answers& answers) : answers(answers) {}
    bool isCertain() const override { return answers.certain; }
    bool isLocked() const override { return answers.locked; }

private:
    Answers& answers;
};

class Screen final : public session::LockScreenProbe {
public:
    explicit Screen(Answers& answers) : answers(answers) {}
    bool isKeyboardGrabbed() override {
        ++answers.looks;
        return answers.grabbed;
    }
    bool isMonitorCovered() override { return answers.covered; }

private:
    Answers& answers;
};

class SessionRules : public testing::Test {
protected:
    void setLocked(bool locked) {
        answers.locked = locked;
        answers.changed();
    }
    static session::SessionParts parts(Answers& answers, bool hasScreen = true) {
        session::SessionParts made;
        made.locks = [&answers](session::LockSource::Changed changed) {
            answers.changed = std::move(changed);
            std::vector<std::unique_ptr<session::LockSource>> all;
            all.push_back(std::make_unique<Service>(answers));
            return all;
        };
        if (hasScreen)
            made.screen = std::make_unique<Screen>(answers);
        return made;
    }
    Observation observe() {
        return session->observeLocking([this] { ++locks; });
    }

    Answers answers;
    fakes::FakeMainLoop loop;
    MainLoop::Installation installation{loop};
    std::unique_ptr<session::LinuxUserSession> session =
        std::make_unique<session::LinuxUserSession>(parts(answers));
    SessionQuestions questions{*session};
    int locks = 0;
};

} // namespace

TEST_F(SessionRules, UnlockedSessionPerformsAtOnceAndLooksAtTheScreenOnce) {
    EXPECT_TRUE(questions.isUnlocked());
    EXPECT_EQ(answers.looks, 1);
}

TEST_F(SessionRules, LockedSessionPerformsNeitherAtOnceNorLater) {
    setLocked(true);
    EXPECT_FALSE(questions.isUnlocked());
    setLocked(false);
    loop.advance(10s);
    EXPECT_EQ(questions.performed, 0);
    EXPECT_TRUE(questions.isUnlocked());
}

TEST_F(SessionRules, GrabThatLastsPerformsNothing) {
    answers.grabbed = true;
    questions.ask();
    loop.advance(2s);
    answers.grabbed = false;
    loop.advance(10s);
    EXPECT_EQ(questions.performed, 0);
}

TEST_F(SessionRules, GrabOfAShortcutsKeyPerformsOnceTheKeyIsUp) {
    answers.grabbed = true;
    EXPECT_FALSE(questions.isUnlocked());
    loop.advance(200ms);
    EXPECT_EQ(questions.performed, 0);
    answers.grabbed = false;
    loop.advance(25ms);
    EXPECT_EQ(questions.performed, 1);
    loop.advance(10s);
    EXPECT_EQ(questions.performed, 1);
}

TEST_F(SessionRules, LockDuringTheWaitDropsTheAction) {
    answers.grabbed = true;
    questions.ask();
    answers.grabbed = false;
    setLocked(true);
    loop.advance(100ms);
    setLocked(false);
    loop.advance(10s);
    EXPECT_EQ(questions.performed, 0);
}

TEST_F(SessionRules, NewerActionTakesThePlaceOfOneThatWaits) {
    answers.grabbed = true;
    questions.ask();
    questions.ask();
    answers.grabbed = false;
    loop.advance(10s);
    EXPECT_EQ(questions.performed, 1);
}

TEST_F(SessionRules, ServicesThatHaveNotAnsweredAreAwaited) {
    answers.certain = false;
    EXPECT_FALSE(questions.isUnlocked());
    answers.certain = true;
    loop.advance(25ms);
    EXPECT_EQ(questions.performed, 1);
}

TEST_F(SessionRules, ServicesThatNeverAnswerCountAsUnlockedAfterASecond) {
    answers.certain = false;
    questions.ask();
    loop.advance(900ms);
    EXPECT_EQ(questions.performed, 0);
    loop.advance(200ms);
    EXPECT_EQ(questions.performed, 1);
}

TEST_F(SessionRules, ActionThatWaitsIsDroppedWithTheSession) {
    answers.grabbed = true;
    questions.ask();
    answers.grabbed = false;
    session.reset();
    loop.advance(10s);
    EXPECT_EQ(questions.performed, 0);
}

TEST_F(SessionRules, ObserverHearsOfEachLockAndOfNoUnlock) {
    const auto observation = observe();
    setLocked(true);
    EXPECT_EQ(locks, 1);
    setLocked(true);
    EXPECT_EQ(locks, 1) << "a second service says so, too";
    setLocked(false);
    EXPECT_EQ(locks, 1);
    setLocked(true);
    EXPECT_EQ(locks, 2);
}

TEST_F(SessionRules, ObserverThatHasGoneHearsNothing) {
    auto observation = observe();
    observation = Observation();
    setLocked(true);
    EXPECT_EQ(locks, 0);
}

TEST_F(SessionRules, ObserverMayLeaveWhileItHears) {
    Observation observation;
    observation = session->observeLocking([&] {
        ++locks;
        observation = Observation();
    });
    answers.grabbed = answers.covered = true;
    loop.advance(10s);
    EXPECT_EQ(locks, 1);
    EXPECT_EQ(answers.looks, 1);
}

TEST_F(SessionRules, ObservationMayOutliveTheSession) {
    auto observation = observe();
    session.reset();
    loop.advance(1s);
    observation = Observation();
    EXPECT_EQ(locks, 0);
}

TEST_F(SessionRules, GrabUnderACoverIsALock) {
    const auto observation = observe();
    answers.grabbed = answers.covered = true;
    loop.advance(250ms);
    EXPECT_EQ(locks, 1);
    loop.advance(10s);
    EXPECT_EQ(locks, 1);
}

TEST_F(SessionRules, GrabAloneAndCoverAloneAreNoLock) {
    const auto observation = observe();
    answers.grabbed = true;
    loop.advance(1s);
    answers.grabbed = false;
    answers.covered = true;
    loop.advance(1s);
    EXPECT_EQ(locks, 0);
}

TEST_F(SessionRules, SecondLockOfTheScreenIsHeardOfBySomebodyWhoObservesAnew) {
    auto observation = observe();
    answers.grabbed = answers.covered = true;
    loop.advance(250ms);
    observation = Observation();
    observation = observe();
    loop.advance(250ms);
    EXPECT_EQ(locks, 2);
}

TEST_F(SessionRules, ScreenIsLookedAtOnlyWhileSomebodyObserves) {
    loop.advance(10s);
    EXPECT_EQ(answers.looks, 0);
    auto observation = observe();
    loop.advance(1s);
    EXPECT_EQ(answers.looks, 4);
    observation = Observation();
    loop.advance(10s);
    EXPECT_EQ(answers.looks, 4);
}

TEST_F(SessionRules, WithoutAScreenTheServicesDecide) {
    answers.grabbed = answers.covered = true;
    session::LinuxUserSession blind(parts(answers, false));
    SessionQuestions asked(blind);
    EXPECT_TRUE(asked.isUnlocked());
    const auto observation = blind.observeLocking([this] { ++locks; });
    loop.advance(10s);
    EXPECT_EQ(locks, 0);
    setLocked(true);
    EXPECT_EQ(locks, 1);
    EXPECT_FALSE(asked.isUnlocked());
}

} // namespace kelo::test
