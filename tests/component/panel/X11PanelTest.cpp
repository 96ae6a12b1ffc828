#include "component/panel/Backdrop.h"
#include "component/panel/PanelFixture.h"
#include "component/panel/SmallerScreen.h"
#include "linux/window/WindowIdentity.h"

#include <gmock/gmock.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <optional>

namespace kelo::test {

namespace {

using testing::Contains;
using testing::Not;

class X11PanelTest : public PanelFixture {
protected:
    static GtkWindow* windowOf(FakeContent& content) {
        return GTK_WINDOW(gtk_widget_get_root(content.widget()));
    }
    bool isAbove(screen::WindowId other) const {
        const auto all = windows.all();
        const auto place = [&](screen::WindowId window) {
            return std::find_if(all.begin(), all.end(),
                                [&](const auto& one) { return one.identifier == window; });
        };
        return place(panelWindow()) > place(other);
    }
};

/// What the server tells of the screen's windows, in its order.
class ServerReports {
public:
    explicit ServerReports(const screen::XConnection& connection) : connection(connection) {
        XSelectInput(connection.display(), connection.root(), SubstructureNotifyMask);
        connection.sync();
    }
    ~ServerReports() { XSelectInput(connection.display(), connection.root(), NoEventMask); }
    ServerReports(const ServerReports&) = delete;
    ServerReports& operator=(const ServerReports&) = delete;

    struct Placement {
        screen::Point corner;
        screen::WindowId below; ///< the window right below it
    };
    /// The last change of the window before it was mapped.
    std::optional<Placement> untilMapped(screen::WindowId window) const {
        std::optional<Placement> last;
        while (XPending(connection.display()) > 0) {
            XEvent event{};
            XNextEvent(connection.display(), &event);
            if (event.type == MapNotify && event.xmap.window == window)
                return last;
            if (event.type == ConfigureNotify && event.xconfigure.window == window)
                last = {{event.xconfigure.x, event.xconfigure.y}, event.xconfigure.above};
        }
        return std::nullopt;
    }

private:
    const screen::XConnection& connection;
};

TEST_F(X11PanelTest, IsTheWindowThatItsKeysAreAddressedTo) {
    EXPECT_EQ(window::windowIdentity(windowOf(*content)), panel);
}

TEST_F(X11PanelTest, IsAboveAWindowThatFillsTheScreen) {
    screen::OtherProgram other;
    settle(other);
    other.fillScreen();
    until("the other program fills the screen", [&] {
        return windows.describe(other.window()).width == connection.width() &&
               colorAt(5, 5) == screen::OtherProgram::color;
    });
    show();
    typeIntoPanel("over it");
    picture("over-full-screen");
    EXPECT_TRUE(contentAt(box().x + 300, box().y + 5));
    hide();
    until("the other program is in front again",
          [&] { return colorAt(box().x + 300, box().y + 5) == screen::OtherProgram::color; });
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
    screen::OtherProgram other;
    settle(other);
    show();
    other.changeWorkspace(1);
    until("the workspace changes", [&] { return current() == 1; });
    until("the other program is gone", [&] {
        return colorAt(other.place().x + 5, other.place().y + 5) != screen::OtherProgram::color;
    });
    EXPECT_TRUE(contentAt(box().x + 300, box().y + 5));
    screen::OtherProgram onThatWorkspace({60, 60, 200, 100});
    settle(onThatWorkspace);
    pointer.click({box().x + 300, box().y + 5});
    until("the panel has the keyboard", [this] { return windows.focused() == panelWindow(); });
    typeIntoPanel("there");
    other.changeWorkspace(0);
    until("the workspace changes back", [&] { return current() == 0; });
    EXPECT_TRUE(contentAt(box().x + 300, box().y + 5));
}

TEST_F(X11PanelTest, IsNoWindowThatTheManagerKnows) {
    screen::OtherProgram other;
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

TEST_F(X11PanelTest, AClickOnTheShadowReachesWhatLiesBelow) {
    screen::OtherProgram other({box().x - 200, box().y + 100, 300, 200});
    settle(other);
    show();
    const int before = other.clicks();
    pointer.click({box().x - 4, box().y + 200});
    until("the click arrives below", [&] {
        other.listen();
        return other.clicks() > before;
    });
}

TEST_F(X11PanelTest, AMenuOfThePageOpensAboveItAndTakesClicks) {
    screen::OtherProgram other;
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
    screen::OtherProgram other;
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
    screen::OtherProgram other;
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

TEST_F(X11PanelTest, ShownAgainItIsOnTheScreenBeforeTheToolkitBeginsToShowIt) {
    show();
    hide();
    EXPECT_TRUE(showAndLookEarly());
    until("the panel is drawn", [this] { return contentAt(box().x + 20, box().y + 300); });
    typeIntoPanel("soon");
}

TEST_F(X11PanelTest, ShownAgainItHasItsNewPlaceAndIsInFrontBeforeItCanBeSeen) {
    show();
    const screen::Point before = corner();
    hide();
    const Backdrop cover;
    until("the screen is covered", [this] { return colorAt(5, 5) == Backdrop::color; });
    panel->setFrameOrigin({300, 120});
    const ServerReports reports(connection);
    panel->makeKeyAndOrderFront();
    digest();
    const auto last = reports.untilMapped(panelWindow());
    ASSERT_TRUE(last);
    EXPECT_EQ(last->corner, (screen::Point{before.x - 20, before.y}));
    EXPECT_EQ(last->below, cover.window());
}

TEST_F(X11PanelTest, GoesWithItsOwnerWhileShownAndLeavesTheKeyboardBehind) {
    screen::OtherProgram other;
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

TEST_F(X11PanelTest, ItsOwnerLearnsOfASmallerMonitorAndCanPlaceItAnew) {
    const auto rightEdge = [this] {
        const auto free = panels.mainScreen().value().visibleFrame;
        return free.x + free.width;
    };
    panel->setScreensHandler([&] { panel->setFrameOrigin({rightEdge() - 500, 20}); });
    show();
    const double before = rightEdge();
    {
        const SmallerScreen smaller(1000, 740);
        until("the panel stands at the new edge", [this] { return box().x == 500; });
    }
    until("the panel stands at the old edge again", [&] { return box().x == before - 500; });
}

TEST_F(X11PanelTest, ItsOwnerLearnsOfChangedWorkAreasWhileItIsShown) {
    if (hasManager())
        GTEST_SKIP() << "a window manager announces work areas of its own in between";
    int changes = 0;
    panel->setScreensHandler([&] { ++changes; });
    const auto announce = [this](long height) {
        const std::array<long, 4> area{0, 0, connection.width(), height};
        XChangeProperty(connection.display(), connection.root(), connection.atom("_NET_WORKAREA"),
                        XA_CARDINAL, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(area.data()), 4);
        connection.sync();
    };
    announce(700);
    show();
    const int whileHidden = changes;
    announce(600);
    until("the work area is noticed", [&] { return changes > whileHidden; });
    hide();
    const int afterwards = changes;
    announce(650);
    gdk_display_sync(gdk_display_get_default());
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    EXPECT_EQ(changes, afterwards);
    XDeleteProperty(connection.display(), connection.root(), connection.atom("_NET_WORKAREA"));
    connection.sync();
}

} // namespace

} // namespace kelo::test
