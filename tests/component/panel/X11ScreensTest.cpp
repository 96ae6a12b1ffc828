#include "component/panel/PanelFixture.h"

// After the test library: Xlib defines macros that break it.
#include "linux/panel/X11Screens.h"

#include <X11/Xatom.h>
#include <X11/extensions/Xrandr.h>

#include <array>

namespace kelo::test {

namespace {

using panel::freeArea;
using panel::PixelRectangle;
using panel::Strut;
using panel::strutOf;

constexpr PixelRectangle pair{0, 0, 3200, 1200};
constexpr PixelRectangle leftMonitor{0, 0, 1920, 1200};
constexpr PixelRectangle rightMonitor{1920, 176, 1280, 1024};

TEST(FreeAreaTest, WithoutPanelsIsTheWholeMonitor) {
    EXPECT_EQ(freeArea(leftMonitor, pair, {}), leftMonitor);
}

TEST(FreeAreaTest, APanelTakesOnlyFromTheMonitorItIsOn) {
    const auto bar = strutOf({0, 0, 30, 0, 0, 0, 0, 0, 0, 1919, 0, 0}, pair);
    ASSERT_TRUE(bar);
    EXPECT_EQ(freeArea(leftMonitor, pair, {*bar}), (PixelRectangle{0, 30, 1920, 1170}));
    EXPECT_EQ(freeArea(rightMonitor, pair, {*bar}), rightMonitor);
}

TEST(FreeAreaTest, CountsFromTheDesktopsEdgeWhereTheMonitorEndsEarlier) {
    constexpr PixelRectangle higher{1920, 0, 1280, 1024};
    const auto bar = strutOf({0, 0, 0, 176 + 40, 0, 0, 0, 0, 0, 0, 1920, 3199}, pair);
    ASSERT_TRUE(bar);
    EXPECT_EQ(freeArea(higher, pair, {*bar}), (PixelRectangle{1920, 0, 1280, 984}));
    EXPECT_EQ(freeArea(leftMonitor, pair, {*bar}), leftMonitor);
}

TEST(FreeAreaTest, ADockBetweenTwoMonitorsLeavesTheOtherOneAlone) {
    const auto dock = strutOf({1920 + 64, 0, 0, 0, 176, 1199, 0, 0, 0, 0, 0, 0}, pair);
    ASSERT_TRUE(dock);
    EXPECT_EQ(freeArea(leftMonitor, pair, {*dock}), leftMonitor);
    EXPECT_EQ(freeArea(rightMonitor, pair, {*dock}), (PixelRectangle{1984, 176, 1216, 1024}));
}

TEST(FreeAreaTest, AStrutWithoutRangesRunsAlongTheWholeEdge) {
    const auto bar = strutOf({0, 0, 0, 24}, pair);
    ASSERT_TRUE(bar);
    EXPECT_EQ(freeArea(leftMonitor, pair, {*bar}), (PixelRectangle{0, 0, 1920, 1176}));
    EXPECT_EQ(freeArea(rightMonitor, pair, {*bar}), (PixelRectangle{1920, 176, 1280, 1000}));
}

TEST(FreeAreaTest, PanelsThatLeaveNothingAreNotBelieved) {
    const Strut upper{0, 0, 700, 0, 0, 0, 0, 0, 0, 3199, 0, 0};
    const Strut lower{0, 0, 0, 700, 0, 0, 0, 0, 0, 0, 0, 3199};
    EXPECT_EQ(freeArea(leftMonitor, pair, {upper, lower}), leftMonitor);
}

TEST(FreeAreaTest, OtherCountsOfNumbersAreNoStrut) {
    EXPECT_FALSE(strutOf({}, pair));
    EXPECT_FALSE(strutOf({1, 2, 3}, pair));
    EXPECT_TRUE(strutOf({~0UL, 0, 0, 0}, pair));
}

/// Two monitors where the display has a single one.
class TwoMonitors {
public:
    TwoMonitors(PixelRectangle first, PixelRectangle second) {
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
        monitor.x = area.x;
        monitor.y = area.y;
        monitor.width = area.width;
        monitor.height = area.height;
        monitor.noutput = count;
        monitor.outputs = outputs;
        XRRSetMonitor(own.display(), own.root(), &monitor);
    }

    screen::XConnection own;
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
    OtherProgram bar({0, connection.height() - 40, connection.width(), 40},
                     OtherProgram::Kind::bar);
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
    OtherProgram onFirst({60, 150, 200, 150});
    settle(onFirst);
    pointer.moveTo({half + 50, 400});
    awaitFrame(points(first));
    OtherProgram onSecond({half + 100, 200, 200, 150});
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

TEST_F(MainScreenTest, APanelOnTheSecondMonitorTakesFromThatOneAlone) {
    if (!hasManager())
        GTEST_SKIP() << "nobody to tell of panels";
    const int half = connection.width() / 2;
    const PixelRectangle first{0, 0, half, connection.height()};
    const PixelRectangle second{half, 0, half, connection.height()};
    const TwoMonitors monitors(first, second);
    OtherProgram bar({half, connection.height() - 40, half, 40}, OtherProgram::Kind::bar);
    const auto from = static_cast<unsigned long>(half);
    bar.reserve({0, 0, 0, 40, 0, 0, 0, 0, 0, 0, from, 2 * from - 1});
    OtherProgram other({half + 100, 200, 200, 150});
    settle(other);
    until("the second monitor is free above the bar", [&] {
        return visibleFrame() == points({half, 0, half, connection.height() - 40});
    });
    OtherProgram onFirst({60, 150, 200, 150});
    settle(onFirst);
    until("the first monitor is free", [&] { return visibleFrame() == points(first); });
}

} // namespace

} // namespace kelo::test
