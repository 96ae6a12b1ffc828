#include "component/panel/AnnouncedDesktop.h"
#include "component/panel/PanelFixture.h"

#include <memory>

namespace kelo::test {

namespace {

/// Who gets the keyboard when the panel goes. The test is the window manager: a real one gives the
/// keyboard to somebody by itself.
class X11KeyboardTest : public PanelFixture {
protected:
    void SetUp() override {
        if (hasManager())
            GTEST_SKIP() << "a window manager gives the keyboard to somebody by itself";
        settle(lower);
        settle(upper);
        announceStack({lower.window(), upper.window()});
        settle(*owner);
    }
    /// From the back to the front.
    void announceStack(const AnnouncedDesktop::Numbers& stack) {
        desktop.windows("_NET_CLIENT_LIST_STACKING", stack);
    }
    void announceActive(screen::WindowId window) {
        desktop.windows("_NET_ACTIVE_WINDOW", {window});
    }
    void ownerGoes() {
        owner.reset();
        EXPECT_EQ(windows.focused(), panelWindow());
    }
    /// Who has the keyboard once the panel is hidden.
    screen::WindowId heir() {
        hide();
        return windows.focused();
    }

    AnnouncedDesktop desktop;
    screen::OtherProgram lower{{20, 20, 100, 60}};
    screen::OtherProgram upper{{140, 20, 100, 60}};
    /// The one that has the keyboard before the panel.
    std::unique_ptr<screen::OtherProgram> owner =
        std::make_unique<screen::OtherProgram>(screen::OtherProgram::Place{260, 20, 100, 60});
};

TEST_F(X11KeyboardTest, TheWindowThatIsClickedComesBeforeAllOthers) {
    show();
    const auto place = windows.describe(lower.window()).origin;
    pointer.click({place.x + 20, place.y + 20});
    until("the window that is clicked has the keyboard",
          [this] { return windows.focused() == lower.window(); });
}

TEST_F(X11KeyboardTest, ItsEarlierOwnerComesFirst) {
    announceActive(lower.window());
    show();
    EXPECT_EQ(heir(), owner->window());
}

TEST_F(X11KeyboardTest, ThenTheActiveWindow) {
    announceActive(upper.window());
    show();
    ownerGoes();
    announceActive(lower.window());
    EXPECT_EQ(heir(), lower.window());
}

TEST_F(X11KeyboardTest, ThenTheOneThatWasActiveBefore) {
    announceActive(lower.window());
    show();
    ownerGoes();
    announceActive(0);
    EXPECT_EQ(heir(), lower.window());
}

TEST_F(X11KeyboardTest, ThenTheUppermostOrdinaryWindow) {
    screen::OtherProgram dock({380, 20, 100, 60}, screen::OtherProgram::Kind::bar);
    screen::OtherProgram background({500, 20, 100, 60});
    desktop.typeOf(background.window(), "_NET_WM_WINDOW_TYPE_DESKTOP");
    screen::OtherProgram minimized({620, 20, 100, 60});
    minimized.withdraw();
    announceStack({background.window(), lower.window(), upper.window(), minimized.window(),
                   dock.window(), background.window()});
    show();
    ownerGoes();
    EXPECT_EQ(heir(), upper.window());
}

TEST_F(X11KeyboardTest, AndWhoeverIsBelowThePointerWhereThereIsNone) {
    announceStack({});
    show();
    ownerGoes();
    EXPECT_EQ(heir(), AnnouncedDesktop::followsPointer);
}

TEST_F(X11KeyboardTest, WindowsThatAreNotOnTheScreenDoNotGetIt) {
    screen::OtherProgram minimized({380, 20, 100, 60});
    minimized.withdraw();
    announceActive(minimized.window());
    show();
    owner->withdraw();
    EXPECT_EQ(heir(), upper.window());
}

TEST_F(X11KeyboardTest, ThatFollowedThePointerDoesSoAgain) {
    desktop.focus(AnnouncedDesktop::followsPointer);
    pointer.moveTo({5, 5});
    show();
    EXPECT_EQ(heir(), AnnouncedDesktop::followsPointer);
}

TEST_F(X11KeyboardTest, ThePanelItselfIsNobodysHeir) {
    show();
    ownerGoes();
    announceActive(panelWindow());
    announceStack({lower.window(), panelWindow()});
    EXPECT_EQ(heir(), lower.window());
}

TEST_F(X11KeyboardTest, AWindowInsideThePanelIsThePanel) {
    show();
    const auto inside = desktop.addChild(panelWindow(), 20, 20);
    desktop.focus(inside);
    panel->makeKeyAndOrderFront();
    until("the panel has the keyboard", [this] { return windows.focused() == panelWindow(); });
    desktop.focus(inside);
    EXPECT_EQ(heir(), owner->window());
}

TEST_F(X11KeyboardTest, WhoGoesWithTheKeyboardLeavesItToWhoeverIsBelowThePointer) {
    show();
    EXPECT_EQ(heir(), owner->window());
    owner.reset();
    EXPECT_EQ(windows.focused(), AnnouncedDesktop::followsPointer);
}

} // namespace

} // namespace kelo::test
