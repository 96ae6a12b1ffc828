// What somebody sees and types who works in another program. Runs under each window manager.
#include "e2e/VoiceProgramFixture.h"

namespace kelo::e2e {

namespace {

class VoiceWidget : public VoiceProgramFixture {
protected:
    screen::OtherProgram other{{90, 70, 620, 420}};

    void SetUp() override {
        VoiceProgramFixture::SetUp();
        goTo(other);
    }
};

} // namespace

TEST_F(VoiceWidget, ComesOverAnotherProgramByATapAndGoesByTheNext) {
    const auto shown = tapToShow();
    awaitPlace(shown, placeOn(wholeScreen()));
    awaitKeyboard(shown);
    awaitWidgetPage(shown);
    picture("shown");
    tapToHide();
    awaitThat("the keyboard is back", [&] { return other.hasKeyboard(); });
    EXPECT_EQ(other.received(), "");
}

TEST_F(VoiceWidget, ComesOverAFullScreenProgram) {
    other.fillScreen();
    awaitThat("the other program fills the screen", [&] {
        const auto area = desktop().screen.windows.describe(other.window());
        return rig::Area{area.origin, area.width, area.height} == wholeScreen();
    });
    const auto shown = tapToShow();
    awaitPlace(shown, placeOn(wholeScreen()));
    awaitKeyboard(shown);
    awaitWidgetPage(shown);
    picture("shown");
    tapToHide();
    awaitThat("the keyboard is back", [&] { return other.hasKeyboard(); });
    desktop().screen.keyboard.type("still full");
    awaitReceived(other, "still full");
}

TEST_F(VoiceWidget, GetsWhatIsTypedAndGivesTheKeyboardBack) {
    desktop().screen.keyboard.type("before ");
    awaitReceived(other, "before ");
    const auto shown = tapToShow();
    awaitWidgetPage(shown);
    awaitKeyboard(shown);
    const auto hasKeyboard = [&](const rig::Wanted& wanted) {
        const auto found = desktop().tree.find(wanted);
        return found && found->isFocused();
    };
    user.press("Tab");
    awaitThat("the page's first button has the keyboard",
              [&] { return hasKeyboard(rig::pageButton("Close")); });
    desktop().screen.keyboard.type("x");
    user.press("Tab");
    awaitThat("the page's second button has the keyboard",
              [&] { return hasKeyboard(rig::pageButton("Start microphone")); });
    picture("typed");
    tapToHide();
    awaitThat("the keyboard is back", [&] { return other.hasKeyboard(); });
    desktop().screen.keyboard.type("after");
    awaitReceived(other, "before after");
}

TEST_F(VoiceWidget, StaysAfterAHoldAndAfterAnotherUntilATap) {
    pressChord();
    const auto shown = awaitPanel();
    awaitWidgetPage(shown);
    releaseChord();
    picture("held");
    EXPECT_TRUE(isPanelShown());
    holdChord();
    // Had the second hold, or its end, put the panel away, the tap would bring it back.
    tapToHide();
    awaitThat("the keyboard is back", [&] { return other.hasKeyboard(); });
}

TEST_F(VoiceWidget, GoesByEscape) {
    const auto shown = tapToShow();
    awaitKeyboard(shown);
    user.press("Escape");
    awaitNoPanel();
    awaitThat("the keyboard is back", [&] { return other.hasKeyboard(); });
    desktop().screen.keyboard.type("on");
    awaitReceived(other, "on");
}

TEST_F(VoiceWidget, TakesTheKeyboardAgainByAClick) {
    const auto shown = tapToShow();
    awaitWidgetPage(shown);
    awaitKeyboard(shown);
    // A part of the other program's window that the panel leaves free.
    desktop().screen.pointer.click({150, 120});
    awaitThat("the other program has the keyboard", [&] { return other.hasKeyboard(); });
    EXPECT_TRUE(isPanelShown());
    desktop().screen.keyboard.type("between");
    awaitReceived(other, "between");
    clickInPanel(shown, rig::pageHeading("Voice"));
    awaitKeyboard(shown);
    user.press("Escape");
    awaitNoPanel();
    EXPECT_EQ(other.received(), "between");
}

} // namespace kelo::e2e
