#include "component/panel/AnnouncedDesktop.h"
#include "component/panel/PanelFixture.h"

// After the test library: Xlib defines macros that break it.
#include "linux/panel/X11Screens.h"

#include <X11/Xatom.h>
#include <X11/extensions/Xrandr.h>

#include <string>
#include <vector>

namespace kelo::test {

namespace {

using panel::PixelRectangle;

/// Two monitors where the display has a single one.
class TwoMonitors {
public:
    TwoMonitors(PixelRectangle first, PixelRectangle second, bool isSecondPrimary = false)
        : isSecondPrimary(isSecondPrimary) {
        RROutput output = 0;
        Display* const x = own.display();
        XRRScreenResources* const resources = XRRGetScreenResources(x, own.root());
        if (resources && resources->noutput > 0)
            output = resources->outputs[0];
        XRRFreeScreenResources(resources);
        add("left", first, &output, output ? 1 : 0);
        add("right", second, nullptr, 0);
        own.sync();
    }
    ~TwoMonitors() {
        for (const char* name : {"left", "right"})
            XRRDeleteMonitor(own.display(), own.root(), own.atom(name));
        own.sync();
    }
    TwoMonitors(const TwoMonitors&) = delete;
    TwoMonitors& operator=(const TwoMonitors&) = delete;

private:
    void add(const char* name, PixelRectangle area, RROutput* outputs, int count) {
        XRRMonitorInfo monitor{};
        monitor.name = own.atom(name);
        monitor.primary = isSecondPrimary && std::string(name) == "right" ? True : False;
        monitor.x = area.x;
        monitor.y = area.y;
        monitor.width = area.width;
        monitor.height = area.height;
        monitor.noutput = count;
        monitor.outputs = outputs;
        XRRSetMonitor(own.display(), own.root(), &monitor);
    }

    screen::XConnection own;
    bool isSecondPrimary;
};

class MainScreenTest : public PanelFixture {
protected:
    void awaitFrame(const platform::Rectangle& expected) {
        until("the main screen is where it should be", [&] { return visibleFrame() == expected; });
    }
    platform::Rectangle visibleFrame() { return panels.mainScreen().value().visibleFrame; }
    double scale() const { return gtk_widget_get_scale_factor(content->widget()); }
    platform::Rectangle points(PixelRectangle pixels) const {
        return {pixels.x / scale(), (connection.height() - pixels.y - pixels.height) / scale(),
                pixels.width / scale(), pixels.height / scale()};
    }
};

TEST_F(MainScreenTest, IsTheWholeDisplayWhenNothingKeepsAPartOfIt) {
    awaitFrame(points({0, 0, connection.width(), connection.height()}));
}

TEST_F(MainScreenTest, ASingleMonitorIsCountedWithoutItsPanels) {
    if (!hasManager())
        GTEST_SKIP() << "nobody to tell of panels";
    const unsigned long width = static_cast<unsigned long>(connection.width());
    screen::OtherProgram bar({0, connection.height() - 40, connection.width(), 40},
                             screen::OtherProgram::Kind::bar);
    bar.reserve({0, 0, 0, 40, 0, 0, 0, 0, 0, 0, 0, width - 1});
    until("the work area is smaller", [this] {
        return visibleFrame() == points({0, 0, connection.width(), connection.height() - 40});
    });
}

TEST_F(MainScreenTest, OfTwoMonitorsItIsTheOneWithTheKeyboard) {
    const int half = connection.width() / 2;
    const PixelRectangle first{0, 0, half, connection.height()};
    const PixelRectangle second{half, 100, half, connection.height() - 100};
    const TwoMonitors monitors(first, second);
    screen::OtherProgram onFirst({60, 150, 200, 150});
    settle(onFirst);
    pointer.moveTo({half + 50, 400});
    awaitFrame(points(first));
    screen::OtherProgram onSecond({half + 100, 200, 200, 150});
    settle(onSecond);
    onSecond.takeKeyboard();
    until("the second has the keyboard", [&] { return windows.focused() == onSecond.window(); });
    pointer.moveTo({50, 400});
    awaitFrame(points(second));
}

TEST_F(MainScreenTest, WithoutAKeyboardOwnerItIsTheMonitorWithThePointer) {
    if (hasManager())
        GTEST_SKIP() << "a window manager gives the keyboard to somebody";
    const int half = connection.width() / 2;
    const TwoMonitors monitors({0, 0, half, connection.height()},
                               {half, 0, half, connection.height()});
    pointer.moveTo({half + 50, 300});
    connection.sync();
    awaitFrame(points({half, 0, half, connection.height()}));
    pointer.moveTo({50, 300});
    connection.sync();
    awaitFrame(points({0, 0, half, connection.height()}));
}

/// What is announced and where the windows are is for the test alone to say.
class MainScreenWithoutManagerTest : public MainScreenTest {
protected:
    using Numbers = AnnouncedDesktop::Numbers;

    void SetUp() override {
        if (hasManager())
            GTEST_SKIP() << "a window manager announces something else";
        desktop.focus(AnnouncedDesktop::followsPointer);
    }
    static unsigned long number(int value) { return static_cast<unsigned long>(value); }
    /// A bar at the bottom of the whole desktop, from one column to another.
    Numbers bar(int height, int from, int to) const {
        return {0, 0, 0, number(height), 0, 0, 0, 0, 0, 0, number(from), number(to)};
    }

    const int width = connection.width();
    const int height = connection.height();
    const int half = width / 2;
    const PixelRectangle whole{0, 0, width, height};
    const PixelRectangle first{0, 0, half, height};
    const PixelRectangle second{half, 0, half, height};
    AnnouncedDesktop desktop;
};

TEST_F(MainScreenWithoutManagerTest, OfASingleMonitorTheCurrentWorkspacesAreaCounts) {
    desktop.numbers("_NET_WORKAREA", {0, 0, number(width), number(height - 10), 0, 0, number(width),
                                      number(height - 50)});
    EXPECT_EQ(visibleFrame(), points({0, 0, width, height - 10}));
    desktop.numbers("_NET_CURRENT_DESKTOP", {1});
    EXPECT_EQ(visibleFrame(), points({0, 0, width, height - 50}));
    desktop.numbers("_NET_CURRENT_DESKTOP", {2});
    EXPECT_EQ(visibleFrame(), points(whole)) << "nothing is said of that one";
}

TEST_F(MainScreenWithoutManagerTest, AnAreaThatIsAnnouncedIsCutAtTheMonitorsEdges) {
    desktop.numbers("_NET_WORKAREA", {0, 20, number(width + 100), number(height)});
    EXPECT_EQ(visibleFrame(), points({0, 20, width, height - 20}));
    desktop.numbers("_NET_WORKAREA", {number(width), 0, 100, 100});
    EXPECT_EQ(visibleFrame(), points(whole)) << "beside the monitor";
}

TEST_F(MainScreenWithoutManagerTest, WhereNoAreaIsAnnouncedPanelsThemselvesCount) {
    screen::OtherProgram panel({0, 0, 20, 20}, screen::OtherProgram::Kind::bar);
    desktop.windows("_NET_CLIENT_LIST", {panel.window()});
    desktop.numbersOf(panel.window(), "_NET_WM_STRUT", {0, 0, 0, 40});
    EXPECT_EQ(visibleFrame(), points({0, 0, width, height - 40})) << "on a single monitor";
    const TwoMonitors monitors(first, second);
    pointer.moveTo({half + 50, 300});
    connection.sync();
    EXPECT_EQ(visibleFrame(), points({half, 0, half, height - 40})) << "on one of two";
    // The finer of two accounts counts.
    desktop.numbersOf(panel.window(), "_NET_WM_STRUT_PARTIAL", bar(40, 0, half - 1));
    EXPECT_EQ(visibleFrame(), points(second));
    pointer.moveTo({50, 300});
    connection.sync();
    EXPECT_EQ(visibleFrame(), points({0, 0, half, height - 40}));
}

TEST_F(MainScreenWithoutManagerTest, OfSeveralMonitorsTheAreaOfThatOneCounts) {
    const TwoMonitors monitors(first, second);
    pointer.moveTo({half + 50, 300});
    connection.sync();
    // One rectangle for all monitors together says nothing of a single one.
    desktop.numbers("_NET_WORKAREA", {0, 0, number(width), number(height - 90)});
    EXPECT_EQ(visibleFrame(), points(second));
    desktop.numbers("_GTK_WORKAREAS_D0", {0, 30, number(half), number(height - 30), number(half), 0,
                                          number(half), number(height - 70)});
    EXPECT_EQ(visibleFrame(), points({half, 0, half, height - 70}));
    desktop.numbers("_GTK_WORKAREAS_D0", {0, 0, number(width), number(height - 70)});
    EXPECT_EQ(visibleFrame(), points(second)) << "an area across two monitors is of neither";
    desktop.numbers("_NET_CURRENT_DESKTOP", {1});
    desktop.numbers("_GTK_WORKAREAS_D1", {number(half), 0, number(half), number(height - 20)});
    EXPECT_EQ(visibleFrame(), points({half, 0, half, height - 20}));
}

TEST_F(MainScreenWithoutManagerTest, OfAWindowAcrossTwoMonitorsTheOneThatShowsMoreOfItCounts) {
    const TwoMonitors monitors(first, second);
    screen::OtherProgram wide({half - 100, 100, 300, 200});
    desktop.focus(wide.window());
    pointer.moveTo({50, 300});
    EXPECT_EQ(visibleFrame(), points(second));
    screen::OtherProgram other({half - 200, 400, 300, 200});
    desktop.focus(other.window());
    pointer.moveTo({half + 50, 300});
    EXPECT_EQ(visibleFrame(), points(first));
}

TEST_F(MainScreenWithoutManagerTest, AKeyboardKeptWhereNobodyLooksSaysNothing) {
    const TwoMonitors monitors(first, second);
    screen::OtherProgram active({half + 100, 100, 200, 150});
    pointer.moveTo({50, 300});
    connection.sync();
    const std::vector<screen::OtherProgram::Place> places{
        {20, 20, 1, 1}, {20, 20, 1, 200}, {20, 20, 200, 1}, {-500, 20, 200, 200}};
    for (const auto& place : places) {
        screen::OtherProgram keeper(place);
        desktop.focus(keeper.window());
        desktop.windows("_NET_ACTIVE_WINDOW", {active.window()});
        EXPECT_EQ(visibleFrame(), points(second)) << place.x << " " << place.width;
        desktop.windows("_NET_ACTIVE_WINDOW", {0});
        pointer.moveTo({half + 50, 300});
        EXPECT_EQ(visibleFrame(), points(second)) << "the pointer's";
        pointer.moveTo({50, 300});
        EXPECT_EQ(visibleFrame(), points(first)) << "the pointer's";
    }
}

TEST_F(MainScreenWithoutManagerTest, AKeyboardInsideAWindowIsWhereThatWindowIs) {
    const TwoMonitors monitors(first, second);
    screen::OtherProgram onSecond({half + 100, 100, 200, 150});
    desktop.focus(desktop.addChild(onSecond.window(), 50, 50));
    pointer.moveTo({50, 300});
    EXPECT_EQ(visibleFrame(), points(second));
}

TEST_F(MainScreenWithoutManagerTest, AKeyboardThatFollowsThePointerIsWhereThePointerIs) {
    const TwoMonitors monitors(first, second);
    screen::OtherProgram active({half + 100, 100, 200, 150});
    desktop.windows("_NET_ACTIVE_WINDOW", {active.window()});
    desktop.focus(AnnouncedDesktop::followsPointer);
    pointer.moveTo({50, 300});
    EXPECT_EQ(visibleFrame(), points(first));
}

TEST_F(MainScreenWithoutManagerTest, WhereNeitherSaysAnythingItIsThePrimaryMonitor) {
    const PixelRectangle low{0, 0, half, height - 200};
    const PixelRectangle lowToo{half, 0, half, height - 200};
    pointer.moveTo({50, height - 50}); // on no monitor
    {
        const TwoMonitors monitors(low, lowToo);
        EXPECT_EQ(visibleFrame(), points(low));
    }
    const TwoMonitors monitors(low, lowToo, true);
    EXPECT_EQ(visibleFrame(), points(lowToo));
}

TEST_F(MainScreenTest, APanelOnTheSecondMonitorTakesFromThatOneAlone) {
    if (!hasManager())
        GTEST_SKIP() << "nobody to tell of panels";
    const int half = connection.width() / 2;
    const PixelRectangle first{0, 0, half, connection.height()};
    const PixelRectangle second{half, 0, half, connection.height()};
    const TwoMonitors monitors(first, second);
    screen::OtherProgram bar({half, connection.height() - 40, half, 40},
                             screen::OtherProgram::Kind::bar);
    const auto from = static_cast<unsigned long>(half);
    bar.reserve({0, 0, 0, 40, 0, 0, 0, 0, 0, 0, from, 2 * from - 1});
    screen::OtherProgram other({half + 100, 200, 200, 150});
    settle(other);
    until("the second monitor is free above the bar", [&] {
        return visibleFrame() == points({half, 0, half, connection.height() - 40});
    });
    screen::OtherProgram onFirst({60, 150, 200, 150});
    settle(onFirst);
    until("the first monitor is free", [&] { return visibleFrame() == points(first); });
}

} // namespace

} // namespace kelo::test
