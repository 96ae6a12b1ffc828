#include "e2e/ProgramFixture.h"
#include "testing/rig/ProcessTree.h"
#include "testing/rig/StandInService.h"

#include <algorithm>
#include <csignal>
#include <regex>

namespace kelo::e2e {

namespace {

constexpr std::chrono::seconds patience{30};

class MainWindow : public ProgramFixture {
protected:
    std::optional<rig::ScreenWindow> mainWindow() const {
        const auto windows = desktop().screen.windows.managed();
        const auto found =
            std::ranges::find(windows, kelo->identifier(), &rig::ScreenWindow::process);
        return found == windows.end() ? std::nullopt : std::optional(*found);
    }

    /// WebKitGTK 2.54 lets a process of its own complain, on its way out, that the bus has gone
    /// first.
    static std::string withoutFarewells(const std::string& printed) {
        static const std::regex farewell(
            R"(\n\([^\n]*\): GLib-GIO-WARNING [^\n]*Error releasing name [^\n]*\.WebProcess-[^\n]*\n)");
        return std::regex_replace(printed, farewell, "");
    }

    /// What happens when somebody starts Kelo once more: the second process hands over and ends.
    void startAgain() const {
        rig::KeloProcess second(build(), folder.path(), folder.path() / "second.log");
        ASSERT_EQ(second.awaitExit(patience), 0) << second.printed();
    }

    void closeWindow() const {
        desktop().screen.windows.tellManager(mainWindow()->identifier, "_NET_CLOSE_WINDOW");
        desktop().tree.awaitThat("Kelo's window is gone", [&] { return !mainWindow(); });
    }

    void openAgain() const {
        EXPECT_TRUE(kelo->isRunning());
        startAgain();
        desktop().tree.awaitThat("Kelo's window is back", [&] { return mainWindow().has_value(); });
    }
};

/// Goes to two places within itself as soon as its window is closed.
constexpr const char* movingPage = R"(<!doctype html><title>Moving</title>
<h1>Moving</h1><label>Note <input id="note"></label>
<script>
document.addEventListener('visibilitychange', () => {
  if (!document.hidden) return;
  history.pushState({}, '', '/pushed');
  location.hash = 'place';
});
addEventListener('hashchange', () => navigator.sendBeacon('/moved?' + location.pathname));
</script>)";

/// Goes to another page as soon as its window is closed.
constexpr const char* leavingPage = R"(<!doctype html><title>Leaving</title>
<h1>Leaving</h1><label>Note <input id="note"></label>
<script>
document.addEventListener('visibilitychange', () => { if (document.hidden) location = '/next'; });
</script>)";

/// Loads itself again once.
constexpr const char* nextPage = R"(<!doctype html><title>Next</title>
<h1>Next</h1>
<script>
if (sessionStorage.loaded) navigator.sendBeacon('/reloaded');
else { sessionStorage.loaded = 'once'; location.reload(); }
</script>)";

/// Leads to another site, as a page does that leaves the sign-in to somebody else.
constexpr const char* startPage = R"(<!doctype html><title>Start</title>
<h1>Start</h1>
<button onclick="location = 'https://localhost:8444/login'">Sign in elsewhere</button>)";

/// Pages of the test's own.
class OwnPages : public MainWindow {
protected:
    void SetUp() override {}
    void TearDown() override {
        ProgramFixture::TearDown();
        pages.reset();
    }

    void showPages(std::map<std::string, std::string> shown) {
        // The demo service makes the certificate that its stand-in uses as well.
        startService();
        service.reset();
        pages = std::make_unique<rig::StandInService>(authority, std::move(shown));
        startKelo();
    }
    void awaitAsked(const std::string& target) const {
        desktop().tree.awaitThat("the page has asked for " + target,
                                 [&] { return !kelo->isRunning() || pages->wasAsked(target); });
    }

    const rig::Wanted note = rig::pageField("Note");
    std::unique_ptr<rig::StandInService> pages;
};

using ClosedMainWindow = OwnPages;

/// The page of another site, at an address that looks like the service's login page.
class ForeignPage : public OwnPages {
protected:
    void TearDown() override {
        OwnPages::TearDown();
        elsewhere.reset();
    }
    void goElsewhere() {
        showPages({{"/", startPage}});
        elsewhere = std::make_unique<rig::StandInService>(
            authority, std::map<std::string, std::string>{{"/login", "<h1>Elsewhere</h1>"}}, 8444);
        user.click(rig::pageButton("Sign in elsewhere"));
        user.awaitDrawn(rig::pageHeading("Elsewhere"));
        user.awaitDrawn(rig::button("Back to Kelo"));
    }

    std::unique_ptr<rig::StandInService> elsewhere;
};

} // namespace

TEST_F(MainWindow, APageWhoseProcessDiesIsReplacedByANoticeThatIsDrawn) {
    for (const pid_t process : rig::processTree(kelo->identifier())) {
        if (rig::programName(process) == "WebKitWebProces")
            kill(process, SIGKILL);
    }
    user.click(rig::pageButton("Try again"));
    user.awaitLoginPage();
}

TEST_F(MainWindow, GivesItsContentTheSizeOfTheScene) {
    const rig::Wanted content{rig::Place::windows, {rig::Role::widget}, "Web page"};
    const rig::Area area = user.awaitDrawn(content);
    EXPECT_EQ(area.width, 1100);
    EXPECT_EQ(area.height, 760);
}

TEST_F(MainWindow, AppearsWithoutAComplaint) {
    EXPECT_EQ(withoutFarewells(kelo->printed()), "");
}

TEST_F(MainWindow, IsRaisedByASecondStart) {
    ASSERT_TRUE(mainWindow());
    // Something else takes the screen: Kelo's window goes to the taskbar.
    desktop().screen.windows.minimize(mainWindow()->identifier);
    desktop().tree.awaitThat("Kelo's window is not the active one", [&] {
        const auto active = desktop().screen.windows.active();
        return !active || active->process != kelo->identifier();
    });
    startAgain();
    desktop().tree.awaitThat("Kelo's window is the active one", [&] {
        const auto active = desktop().screen.windows.active();
        return active && active->process == kelo->identifier();
    });
    EXPECT_TRUE(kelo->isRunning());
}

TEST_F(MainWindow, ClosedLeavesTheProcessRunningAndComesBackWithItsPage) {
    user.signInWithPassword(ada.email, ada.password);
    user.awaitSignedIn("Ada");
    closeWindow();
    openAgain();
    user.awaitSignedIn("Ada");
    EXPECT_TRUE(kelo->isRunning());
}

TEST_F(MainWindow, QuitInTheMenuEndsTheProcess) {
    user.chooseFromMenu("Kelo", "Quit");
    EXPECT_EQ(kelo->awaitExit(patience), 0) << kelo->printed();
}

TEST_F(ClosedMainWindow, PageThatMovesWithinItselfComesBackWithWhatWasTyped) {
    showPages({{"/", movingPage}});
    user.awaitDrawn(note);
    user.typeInto(note, "keep me");
    closeWindow();
    awaitAsked("/moved?/pushed");
    openAgain();
    user.awaitDrawn(note);
    EXPECT_EQ(desktop().tree.await(note).text(), "keep me");
    EXPECT_TRUE(kelo->isRunning());
}

TEST_F(ClosedMainWindow, PageThatGoesElsewhereIsShownThereByTheNextWindow) {
    showPages({{"/", leavingPage}, {"/next", nextPage}});
    user.awaitDrawn(note);
    closeWindow();
    awaitAsked("/reloaded");
    openAgain();
    user.awaitDrawn(rig::pageHeading("Next"));
    EXPECT_TRUE(kelo->isRunning());
}

TEST_F(ForeignPage, IsNamedWithoutTheSignInButtonAndLeftByKeys) {
    goElsewhere();
    desktop().tree.await({rig::Place::windows,
                          {rig::Role::panel, rig::Role::group},
                          "This page is from localhost:8444"});
    awaitAnnounced("This page is from localhost:8444");
    desktop().tree.awaitGone(rig::button("Sign in with passkey"));
    look("named");
    user.press("F6");
    desktop().tree.awaitThat("the bar has the keyboard", [&] {
        return desktop().tree.await(rig::button("Back to Kelo")).isFocused();
    });
    user.press("space");
    user.awaitDrawn(rig::pageHeading("Start"));
    desktop().tree.awaitGone(rig::button("Back to Kelo"));
}

TEST_F(ForeignPage, DoesNotComeBackWithTheNextWindow) {
    goElsewhere();
    closeWindow();
    openAgain();
    user.awaitDrawn(rig::pageHeading("Start"));
    desktop().tree.awaitGone(rig::button("Back to Kelo"));
}

} // namespace kelo::e2e
