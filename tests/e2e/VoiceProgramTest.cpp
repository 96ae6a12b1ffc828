// The chord and the panel in the life of the program: before, beside and after its main window.
#include "e2e/VoiceProgramFixture.h"

#include <array>
#include <string_view>

namespace kelo::e2e {

namespace {

constexpr std::chrono::seconds patience{30};

class VoiceProgram : public VoiceProgramFixture {
protected:
    /// Starts Kelo once more with these arguments, waits for its end, and gives what it printed.
    std::string startAgain(const std::vector<std::string>& arguments) const {
        rig::KeloProcess second(build(), folder.path(), folder.path() / "second.log", arguments);
        EXPECT_EQ(second.awaitExit(patience), 0) << second.printed();
        return second.printed();
    }

    /// Asks again only after a long time: a manager that is busy with a new window may forget the
    /// first request, but a needless second one would come in between what is typed then.
    void useMainWindow() const {
        using Clock = std::chrono::steady_clock;
        const auto window = mainWindow();
        auto next = Clock::now();
        awaitThat("the main window has the keyboard", [&] {
            if (panel.hasKeyboard(*window))
                return true;
            if (Clock::now() >= next) {
                desktop().screen.windows.tellManager(window->identifier, "_NET_ACTIVE_WINDOW");
                next = Clock::now() + std::chrono::seconds(5);
            }
            return false;
        });
    }

    void closeMainWindow() const {
        desktop().screen.windows.tellManager(mainWindow()->identifier, "_NET_CLOSE_WINDOW");
        awaitThat("Kelo's window is gone", [&] { return !mainWindow(); });
    }
};

} // namespace

TEST_F(VoiceProgram, LogsTheHotkeyAndThenTheController) {
    const std::string log = debugLog();
    const auto hotkey = log.find("hotkey.start global=true local=true\n");
    const auto controller = log.find("VoiceController.start — widget = web /widget host\n");
    ASSERT_NE(hotkey, std::string::npos) << log;
    ASSERT_NE(controller, std::string::npos) << log;
    EXPECT_LT(hotkey, controller) << log;
}

TEST_F(VoiceProgram, StillHearsTheChordWithoutItsMainWindowAndOnceATapWhenItIsBack) {
    closeMainWindow();
    picture("closed");
    awaitKeyboard(tapToShow());
    tapToHide();
    startAgain({});
    awaitThat("Kelo's window is back", [&] { return mainWindow().has_value(); });
    // The monitors are there twice now. A tap that counted twice would leave the panel as it was.
    awaitKeyboard(tapToShow());
    tapToHide();
    awaitKeyboard(tapToShow());
    tapToHide();
}

TEST_F(VoiceProgram, EscapeInTheMainWindowLeavesThePanel) {
    user.awaitLoginPage();
    const auto shown = tapToShow();
    awaitWidgetPage(shown);
    awaitKeyboard(shown);
    useMainWindow();
    user.press("Escape");
    // The page gets a key that comes after Escape: both have been dealt with by then.
    desktop().screen.keyboard.type("a");
    awaitThat("the main window's page has got the next key", [&] {
        const auto field = desktop().tree.find(rig::pageField("Email"));
        return field && field->text() == "a";
    });
    EXPECT_TRUE(isPanelShown());
    picture("escaped");
}

TEST_F(VoiceProgram, HearsTheChordInItsOwnWindow) {
    useMainWindow();
    awaitKeyboard(tapToShow());
    tapToHide();
    tapToShow();
    tapToHide();
}

TEST_F(VoiceProgram, TheWidgetArgumentDoesWhatATapDoes) {
    startAgain({"--widget"});
    const auto shown = awaitPanel();
    awaitWidgetPage(shown);
    awaitKeyboard(shown);
    startAgain({"--widget"});
    awaitNoPanel();
    tapToShow();
    startAgain({"--widget"});
    awaitNoPanel();
}

TEST_F(VoiceProgram, TheWidgetArgumentStartsTheProgramWhereItIsNotRunning) {
    endKelo();
    kelo = std::make_unique<rig::KeloProcess>(build(), folder.path(), folder.path() / "kelo.log",
                                              std::vector<std::string>{"--widget"});
    const auto shown = awaitPanel();
    awaitWidgetPage(shown);
    awaitKeyboard(shown);
    user.press("Escape");
    awaitNoPanel();
    EXPECT_TRUE(kelo->isRunning());
}

TEST_F(VoiceProgram, ReportsTheSourcesOfTheHotkey) {
    const std::string report = startAgain({"--hotkey-status"});
    for (const std::string_view source : {"X11", "evdev", "portal"})
        EXPECT_NE(report.find(source), std::string::npos) << report;
    EXPECT_FALSE(isPanelShown());
}

} // namespace kelo::e2e
