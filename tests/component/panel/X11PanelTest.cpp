#include "component/panel/AnnouncedDesktop.h"
#include "component/panel/Backdrop.h"
#include "component/panel/PanelFixture.h"
#include "linux/window/WindowIdentity.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <utility>

namespace kelo::test {

namespace {

using testing::Contains;
using testing::Not;

class X11PanelTest : public PanelFixture {
protected:
    static GtkWindow* windowOf(FakeContent& content) {
        return GTK_WINDOW(gtk_widget_get_root(content.widget()));
    }
    /// Whether toolkit and page are told that the panel has the keyboard.
    bool countsAsActive() const {
        const auto state = windows.numbers(panelWindow(), "_NET_WM_STATE");
        return std::find(state.begin(), state.end(), connection.atom("_NET_WM_STATE_FOCUSED")) !=
               state.end();
    }
    bool isAbove(screen::WindowId other) const {
        const auto all = windows.all();
        const auto place = [&](screen::WindowId window) {
            return std::find_if(all.begin(), all.end(),
                                [&](const auto& one) { return one.identifier == window; });
        };
        return place(panelWindow()) > place(other);
    }
    /// Has the toolkit deal with all that the server has sent so far.
    static void digest() {
        gdk_display_sync(gdk_display_get_default());
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
        gdk_display_sync(gdk_display_get_default());
    }
};

TEST_F(X11PanelTest, IsTheWindowThatItsKeysAreAddressedTo) {
    EXPECT_EQ(window::windowIdentity(windowOf(*content)), panel);
}

TEST_F(X11PanelTest, TakesTheKeyboardAndGivesItBackEachTime) {
    OtherProgram other;
    settle(other);
    typeInto(other, "before");
    for (const std::string text : {"first", "second"}) {
        show();
        typeIntoPanel(text);
        hide();
        until("the other program has the keyboard again",
              [&] { return windows.focused() == other.window(); });
        typeInto(other, text);
    }
}

TEST_F(X11PanelTest, CountsAsActiveOnlyWhileItHasTheKeyboard) {
    OtherProgram other;
    settle(other);
    for (int round = 0; round < 2; ++round) {
        show();
        until("the caret blinks", [&] { return content->hasCaret(); });
        other.takeKeyboard();
        until("the caret is gone", [&] { return !content->hasCaret(); });
        hide();
    }
}

TEST_F(X11PanelTest, AMenuOfAnotherProgramLeavesItActive) {
    if (manager() == "mutter")
        GTEST_SKIP() << "this one takes what we say of our window off it again";
    OtherProgram other;
    settle(other);
    show();
    until("the panel is active", [this] { return countsAsActive(); });
    other.grabKeyboard();
    digest();
    EXPECT_TRUE(countsAsActive());
    other.releaseKeyboard();
    digest();
    EXPECT_TRUE(countsAsActive());
    EXPECT_EQ(windows.focused(), panelWindow());
}

TEST_F(X11PanelTest, OnceHiddenItIsActiveNoMoreAlsoUnderThePointer) {
    if (hasManager())
        GTEST_SKIP() << "with a window manager, the keyboard does not follow the pointer";
    pointer.moveTo({box().x + 100, box().y + 100});
    AnnouncedDesktop desktop;
    desktop.focus(AnnouncedDesktop::followsPointer);
    show();
    until("the panel is active", [this] { return countsAsActive(); });
    hide();
    digest();
    EXPECT_FALSE(countsAsActive());
}

TEST_F(X11PanelTest, IsAboveAWindowThatFillsTheScreen) {
    OtherProgram other;
    settle(other);
    other.fillScreen(hasManager());
    until("the other program fills the screen", [&] {
        return windows.describe(other.window()).width == connection.width() &&
               colorAt(5, 5) == OtherProgram::color;
    });
    show();
    typeIntoPanel("over it");
    picture("over-full-screen");
    EXPECT_TRUE(contentAt(box().x + 300, box().y + 5));
    hide();
    until("the other program is in front again",
          [&] { return colorAt(box().x + 300, box().y + 5) == OtherProgram::color; });
    typeInto(other, "again");
}

TEST_F(X11PanelTest, StaysOnTheScreenWhileTheWorkspaceChanges) {
    if (!hasManager())
        GTEST_SKIP() << "no workspaces without a window manager";
    const auto workspaces = windows.numbers(connection.root(), "_NET_NUMBER_OF_DESKTOPS");
    if (workspaces.empty() || workspaces.front() < 2)
        GTEST_SKIP() << manager() << " has a single workspace here";
    const auto current = [this] {
        return windows.numbers(connection.root(), "_NET_CURRENT_DESKTOP").front();
    };
    OtherProgram other;
    settle(other);
    show();
    other.changeWorkspace(1);
    until("the workspace changes", [&] { return current() == 1; });
    until("the other program is gone",
          [&] { return colorAt(other.place().x + 5, other.place().y + 5) != OtherProgram::color; });
    EXPECT_TRUE(contentAt(box().x + 300, box().y + 5));
    OtherProgram onThatWorkspace({60, 60, 200, 100});
    settle(onThatWorkspace);
    pointer.click({box().x + 300, box().y + 5});
    until("the panel has the keyboard", [this] { return windows.focused() == panelWindow(); });
    typeIntoPanel("there");
    other.changeWorkspace(0);
    until("the workspace changes back", [&] { return current() == 0; });
    EXPECT_TRUE(contentAt(box().x + 300, box().y + 5));
}

TEST_F(X11PanelTest, IsNoWindowThatTheManagerKnows) {
    OtherProgram other;
    settle(other);
    show();
    std::vector<screen::WindowId> known;
    for (const auto& window : windows.managed())
        known.push_back(window.identifier);
    EXPECT_THAT(known, Not(Contains(panelWindow())));
    if (hasManager()) {
        EXPECT_THAT(known, Contains(other.window()));
    }
    EXPECT_TRUE(windows.describe(panelWindow()).overridesRedirect);
}

TEST_F(X11PanelTest, AClickBringsTheKeyboardBack) {
    OtherProgram other;
    settle(other);
    show();
    const auto place = windows.describe(other.window()).origin;
    pointer.click({place.x + 20, place.y + 20});
    // Not every manager gives the keyboard on a click into a window that it is still placing.
    other.takeKeyboard();
    until("the other program has the keyboard",
          [&] { return windows.focused() == other.window(); });
    EXPECT_TRUE(panel->isVisible());
    typeInto(other, "outside");
    pointer.click({box().x + 100, box().y + 100});
    until("the panel has the keyboard", [this] { return windows.focused() == panelWindow(); });
    typeIntoPanel("inside");
    hide();
    until("the other program has the keyboard again",
          [&] { return windows.focused() == other.window(); });
}

TEST_F(X11PanelTest, AnyButtonAnywhereInItBringsTheKeyboardBack) {
    OtherProgram other;
    settle(other);
    show();
    const Box at = box();
    const screen::Point entry{at.x + at.width / 2, at.y + at.height / 2};
    const screen::Point page{at.x + 100, at.y + 100};
    for (const auto& [place, button] :
         {std::pair(entry, 1U), std::pair(page, 2U), std::pair(page, 3U)}) {
        other.takeKeyboard();
        until("the other program has the keyboard",
              [&] { return windows.focused() == other.window(); });
        pointer.click(place, button);
        until("button " + std::to_string(button) + " brings the keyboard back",
              [this] { return windows.focused() == panelWindow(); });
    }
}

TEST_F(X11PanelTest, AClickOnTheShadowReachesWhatLiesBelow) {
    OtherProgram other({box().x - 200, box().y + 100, 300, 200});
    settle(other);
    show();
    const int before = other.clicks();
    pointer.click({box().x - 4, box().y + 200});
    until("the click arrives below", [&] {
        other.listen();
        return other.clicks() > before;
    });
}

TEST_F(X11PanelTest, LeavesTheKeyboardToWhoeverTookItLater) {
    OtherProgram first;
    settle(first);
    show();
    OtherProgram second({600, 60, 200, 40});
    settle(second);
    second.takeKeyboard();
    until("the second has the keyboard", [&] { return windows.focused() == second.window(); });
    hide();
    EXPECT_EQ(windows.focused(), second.window());
    typeInto(second, "mine");
}

TEST_F(X11PanelTest, GivesTheKeyboardBackToWhoeverTookItInBetween) {
    OtherProgram first;
    settle(first);
    show();
    OtherProgram second({600, 60, 200, 40});
    settle(second);
    show();
    typeIntoPanel("mine again");
    hide();
    until("the second has the keyboard", [&] { return windows.focused() == second.window(); });
    typeInto(second, "back");
}

TEST_F(X11PanelTest, GivesTheKeyboardToSomebodyWhenItsEarlierOwnerIsGone) {
    OtherProgram stays;
    settle(stays);
    {
        OtherProgram goes({600, 60, 200, 40});
        settle(goes);
        goes.takeKeyboard();
        until("it has the keyboard", [&] { return windows.focused() == goes.window(); });
        show();
    }
    until("the window is gone", [&] { return windows.managed().size() <= 1; });
    hide();
    // Without a manager, whoever the pointer is over gets the keys.
    if (!hasManager())
        pointer.moveTo({stays.place().x + 5, stays.place().y + 5});
    else
        until("the other program has the keyboard",
              [&] { return windows.focused() == stays.window(); });
    typeInto(stays, "heir");
}

TEST_F(X11PanelTest, WithoutTheRightToTheKeyboardNeverTakesIt) {
    auto description = voicePanel();
    description.canBecomeKeyWindow = false;
    panel = panels.makePanel(description);
    panel->setContentView({content, 18, 18, true});
    panel->setFrameOrigin({320, 120});
    OtherProgram other;
    settle(other);
    panel->makeKeyAndOrderFront();
    until("the panel is drawn", [this] { return contentAt(box().x + 20, box().y + 300); });
    pointer.click({box().x + 100, box().y + 100});
    typeInto(other, "still mine");
    EXPECT_EQ(windows.focused(), other.window());
}

TEST_F(X11PanelTest, AMenuOfThePageOpensAboveItAndTakesClicks) {
    OtherProgram other;
    settle(other);
    show();
    content->openMenu();
    until("the menu is open", [this] { return content->menuIsOpen(); });
    const int scale = box().width / 640;
    screen::Point there;
    until("the menu is drawn", [&] {
        const platform::Point middle = content->menuMiddle();
        there = {box().x + int(middle.x) * scale, box().y + int(middle.y) * scale};
        return !contentAt(there.x - 50 * scale, there.y);
    });
    picture("menu");
    pointer.click(there);
    until("the choice is made", [this] { return content->menuChoices() == 1; });
    content->closeMenu();
    until("the panel has the keyboard", [this] { return windows.focused() == panelWindow(); });
    typeIntoPanel("after the menu");
}

TEST_F(X11PanelTest, ShownAndHiddenAgainAndAgainKeepsWhatItHolds) {
    const auto openFiles = [] {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return std::distance(begin(files), end(files));
    };
    OtherProgram other;
    settle(other);
    show();
    const auto window = panelWindow();
    hide();
    const auto files = openFiles();
    const auto onScreen = windows.all().size();
    const auto inside = windows.children(window).size();
    for (int round = 0; round < 200; ++round) {
        show();
        ASSERT_EQ(panelWindow(), window);
        hide();
    }
    until("nothing is left of it", [&] {
        return openFiles() <= files && windows.all().size() <= onScreen &&
               windows.children(window).size() <= inside;
    });
}

TEST_F(X11PanelTest, ShowingItAgainRaisesItAndChangesNothingElse) {
    OtherProgram other;
    settle(other);
    show();
    const Box before = box();
    const auto window = panelWindow();
    // Above the panel, as only another window past the window manager can be.
    const Backdrop cover;
    until("the panel is covered",
          [&] { return colorAt(before.x + 20, before.y + 300) == Backdrop::color; });
    EXPECT_FALSE(isAbove(cover.window()));
    panel->makeKeyAndOrderFront();
    until("the panel is in front", [&] { return isAbove(cover.window()); });
    // This one draws what lies past it in the order in which it first appeared.
    if (manager() != "mutter")
        until("the panel is drawn in front",
              [&] { return contentAt(before.x + 20, before.y + 300); });
    EXPECT_EQ(box(), before);
    EXPECT_EQ(panelWindow(), window);
    typeIntoPanel("once more");
    hide();
    until("the other program has the keyboard again",
          [&] { return windows.focused() == other.window(); });
}

TEST_F(X11PanelTest, GoesWithItsOwnerWhileShownAndLeavesTheKeyboardBehind) {
    OtherProgram other;
    settle(other);
    show();
    const auto window = panelWindow();
    panel.reset();
    until("the window is gone", [&] {
        const auto all = windows.all();
        return std::none_of(all.begin(), all.end(),
                            [&](const auto& one) { return one.identifier == window; });
    });
    until("the other program has the keyboard again",
          [&] { return windows.focused() == other.window(); });
    // The contents live on without their panel, and can move to another one.
    panel = panels.makePanel(voicePanel());
    panel->setContentView({content, 18, 18, true});
    panel->setFrameOrigin({320, 120});
    show();
    typeIntoPanel("moved");
}

TEST_F(X11PanelTest, KeepsContentsAliveThatNobodyElseHolds) {
    std::weak_ptr<FakeContent> watched = content;
    content.reset();
    EXPECT_FALSE(watched.expired());
    panel->makeKeyAndOrderFront();
    EXPECT_TRUE(panel->isVisible());
    panel.reset();
    EXPECT_TRUE(watched.expired());
}

TEST_F(X11PanelTest, TheFirstResponderGetsTheKeys) {
    panel->makeKeyAndOrderFront();
    until("the panel has the keyboard", [this] { return windows.focused() == panelWindow(); });
    gtk_window_set_focus(windowOf(*content), nullptr);
    EXPECT_FALSE(content->hasCaret());
    panel->makeFirstResponder(content);
    until("the caret blinks", [this] { return content->hasCaret(); });
    typeIntoPanel("here");
}

TEST_F(X11PanelTest, IgnoresAFirstResponderThatIsNotInside) {
    const auto elsewhere = std::make_shared<FakeContent>();
    const auto another = panels.makePanel(voicePanel());
    another->setContentView({elsewhere, 18, 18, true});
    gtk_window_set_focus(windowOf(*elsewhere), nullptr);
    show();
    panel->makeFirstResponder(elsewhere);
    EXPECT_EQ(gtk_window_get_focus(windowOf(*elsewhere)), nullptr);
    panel->makeFirstResponder(std::make_shared<FakeContent>());
    panel->makeFirstResponder(nullptr);
    typeIntoPanel("still here");
}

TEST_F(X11PanelTest, ShowsOneViewAtATimeAndNothingInPlaceOfOneItCannotDraw) {
    show();
    GtkWidget* const frame = gtk_widget_get_parent(content->widget());
    const auto next = std::make_shared<FakeContent>();
    panel->setContentView({next, 18, 18, true});
    EXPECT_EQ(gtk_widget_get_first_child(frame), next->widget());
    EXPECT_EQ(gtk_widget_get_last_child(frame), next->widget());
    const auto withoutWidget = std::make_shared<fakes::FakeWebView>(
        platform::Rectangle(), platform::WebViewConfiguration());
    panel->setContentView({withoutWidget, 18, 18, true});
    EXPECT_EQ(gtk_widget_get_first_child(frame), nullptr);
    EXPECT_GT(withoutWidget.use_count(), 1) << "it is kept";
}

} // namespace

} // namespace kelo::test
