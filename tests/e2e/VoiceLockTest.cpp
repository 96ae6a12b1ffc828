// A locked screen: the widget is signed in, and whoever stands before the screen may be anybody.
#include "e2e/VoiceProgramFixture.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace kelo::e2e {

namespace {

constexpr std::chrono::seconds patience{30};
constexpr const char* refusal = "so nothing is shown";

/// Listens as soon as it is there, and tells the service when it cannot any more.
constexpr const char* listeningPage = R"(<!doctype html><h1>Voice</h1><script>
navigator.mediaDevices.getUserMedia({ audio: true }).then((stream) => {
  stream.getAudioTracks()[0].onended = () => fetch('/ended', { keepalive: true });
  fetch('/live');
});
</script>)";

class VoiceLock : public VoiceProgramFixture {
protected:
    void SetUp() override {
        // That nothing has happened can be known only if the program says that it did nothing.
        setenv("G_MESSAGES_DEBUG", "Kelo", 1);
        VoiceProgramFixture::SetUp();
        unsetenv("G_MESSAGES_DEBUG");
        served = &standIn({{"/widget", listeningPage}});
    }
    void TearDown() override {
        locker.reset();
        VoiceProgramFixture::TearDown();
    }

    void lock() {
        locker.emplace(std::vector<std::string>{KELO_LOCK_SCREEN, "i3lock"},
                       std::map<std::string, std::string>{}, folder.path() / "locker.log");
        awaitThat("the lock screen covers the screen", [&] {
            const auto all = desktop().screen.windows.all();
            return std::ranges::any_of(all, [&](const rig::ScreenWindow& window) {
                return window.isMapped && window.process != kelo->identifier() &&
                       rig::Area{window.origin, window.width, window.height} == wholeScreen();
            });
        });
    }
    void unlock() { locker.reset(); }

    std::ptrdiff_t refusals() const {
        const std::string printed = kelo->printed();
        std::ptrdiff_t count = 0;
        for (auto at = printed.find(refusal); at != std::string::npos;
             at = printed.find(refusal, at + 1))
            ++count;
        return count;
    }
    void awaitRefusals(std::ptrdiff_t count) const {
        awaitThat("the program has refused", [&] { return refusals() == count; });
    }
    std::ptrdiff_t loads() const { return std::ranges::count(served->requests(), "/widget"); }

    rig::StandInService* served = nullptr;
    std::optional<rig::ChildProcess> locker;
};

} // namespace

TEST_F(VoiceLock, NeitherChordNorCommandShowsLoadsOrGrantsAnythingOverALockScreen) {
    lock();
    tapChord();
    awaitRefusals(1);
    holdChord();
    awaitRefusals(2);
    rig::KeloProcess second(build(), folder.path(), folder.path() / "second.log", {"--widget"});
    EXPECT_EQ(second.awaitExit(patience), 0) << second.printed();
    awaitRefusals(3);
    picture("locked");
    EXPECT_FALSE(isPanelShown());
    EXPECT_EQ(loads(), 0);
    unlock();
    awaitKeyboard(tapToShow());
    awaitThat("the page is loaded", [&] { return loads() == 1; });
    EXPECT_EQ(refusals(), 3);
}

TEST_F(VoiceLock, GrabOfAnotherProgramIsRespected) {
    screen::OtherProgram other{{90, 70, 620, 420}};
    goTo(other);
    other.grabKeyboard();
    tapChord();
    awaitRefusals(1);
    EXPECT_FALSE(isPanelShown());
    EXPECT_EQ(loads(), 0);
    other.releaseKeyboard();
    awaitKeyboard(tapToShow());
}

TEST_F(VoiceLock, HidesTheShownPanelUntilTheNextTapAfterIt) {
    awaitKeyboard(tapToShow());
    awaitThat("the page is loaded", [&] { return loads() == 1; });
    lock();
    awaitNoPanel();
    picture("locked");
    unlock();
    awaitKeyboard(tapToShow());
    awaitThat("the page is loaded anew", [&] { return loads() == 2; });
}

TEST_F(VoiceLock, EndsTheMicrophoneOfTheShownPanel) {
    if (!std::getenv("PULSE_SERVER"))
        GTEST_SKIP()
            << "There is no microphone here: run it inside tests/component/with-microphone.";
    tapToShow();
    awaitAsked(*served, "/live");
    lock();
    awaitNoPanel();
    awaitAsked(*served, "/ended");
}

} // namespace kelo::e2e
