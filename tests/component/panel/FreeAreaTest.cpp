#include <gtest/gtest.h>

// After the test library: Xlib defines macros that break it.
#include "linux/panel/X11Screens.h"

#include <array>
#include <vector>

namespace kelo::test {

namespace {

using desktop::freeArea;
using desktop::PixelRectangle;
using desktop::Strut;
using desktop::strutOf;

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
    const Strut upper{0, 0, 600, 0, 0, 0, 0, 0, 0, 3199, 0, 0};
    const Strut lower{0, 0, 0, 600, 0, 0, 0, 0, 0, 0, 0, 3199};
    EXPECT_EQ(freeArea(leftMonitor, pair, {upper, lower}), leftMonitor);
    const Strut left{960, 0, 0, 0, 0, 1199, 0, 0, 0, 0, 0, 0};
    const Strut right{0, 3200 - 960, 0, 0, 0, 0, 0, 1199, 0, 0, 0, 0};
    EXPECT_EQ(freeArea(leftMonitor, pair, {left, right}), leftMonitor);
}

TEST(FreeAreaTest, OfSeveralPanelsAtAnEdgeTheDeepestCounts) {
    const PixelRectangle monitor{0, 0, 1000, 1000};
    const auto all = [](Strut strut) {
        strut.leftTo = strut.rightTo = strut.topTo = strut.bottomTo = 999;
        return strut;
    };
    const PixelRectangle free{30, 70, 920, 840};
    const std::vector<Strut> struts{all({30, 50, 70, 90}), all({20, 40, 60, 80})};
    EXPECT_EQ(freeArea(monitor, monitor, struts), free);
    EXPECT_EQ(freeArea(monitor, monitor, {struts[1], struts[0]}), free);
}

TEST(FreeAreaTest, APanelIsOnTheMonitorThatItReachesByAPixel) {
    const PixelRectangle desktop{0, 0, 3000, 3000};
    const PixelRectangle monitor{1000, 1000, 1000, 1000};
    // Along an edge of the desktop, deep enough to reach into the monitor.
    const auto along = [&](int from, int to) {
        Strut left;
        left.left = 1100, left.leftFrom = from, left.leftTo = to;
        Strut right;
        right.right = 1100, right.rightFrom = from, right.rightTo = to;
        Strut top;
        top.top = 1100, top.topFrom = from, top.topTo = to;
        Strut bottom;
        bottom.bottom = 1100, bottom.bottomFrom = from, bottom.bottomTo = to;
        return freeArea(monitor, desktop, {left, right, top, bottom});
    };
    const PixelRectangle inside{1100, 1100, 800, 800};
    EXPECT_EQ(along(0, 999), monitor) << "ends right before it";
    EXPECT_EQ(along(0, 1000), inside) << "ends on its first pixel";
    EXPECT_EQ(along(1999, 2999), inside) << "begins on its last pixel";
    EXPECT_EQ(along(2000, 2999), monitor) << "begins right behind it";
}

TEST(FreeAreaTest, APanelThatReachesAcrossTheWholeMonitorIsNotOnIt) {
    const PixelRectangle desktop{0, 0, 3000, 3000};
    const PixelRectangle monitor{1000, 1000, 1000, 1000};
    const Strut deep{2000, 2000, 2000, 2000, 0, 2999, 0, 2999, 0, 2999, 0, 2999};
    for (const auto side : {&Strut::left, &Strut::right, &Strut::top, &Strut::bottom}) {
        Strut one = deep;
        one.left = one.right = one.top = one.bottom = 0;
        one.*side = 2000;
        const Strut bar{0, 0, 0, 1050, 0, 0, 0, 0, 0, 0, 0, 2999};
        EXPECT_EQ(freeArea(monitor, desktop, {one, bar}), freeArea(monitor, desktop, {bar}));
    }
}

TEST(FreeAreaTest, RangesAreTakenFromTheirPlacesInTheProperty) {
    const auto strut = strutOf({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, pair);
    ASSERT_TRUE(strut);
    EXPECT_EQ((std::array{strut->left, strut->right, strut->top, strut->bottom}),
              (std::array{1, 2, 3, 4}));
    EXPECT_EQ((std::array{strut->leftFrom, strut->leftTo, strut->rightFrom, strut->rightTo}),
              (std::array{5, 6, 7, 8}));
    EXPECT_EQ((std::array{strut->topFrom, strut->topTo, strut->bottomFrom, strut->bottomTo}),
              (std::array{9, 10, 11, 12}));
}

TEST(FreeAreaTest, AStrutWithoutRangesEndsWithTheDesktop) {
    const auto strut = strutOf({1, 2, 3, 4}, pair);
    ASSERT_TRUE(strut);
    EXPECT_EQ((std::array{strut->leftFrom, strut->leftTo, strut->rightFrom, strut->rightTo}),
              (std::array{0, 1199, 0, 1199}));
    EXPECT_EQ((std::array{strut->topFrom, strut->topTo, strut->bottomFrom, strut->bottomTo}),
              (std::array{0, 3199, 0, 3199}));
}

TEST(FreeAreaTest, OtherCountsOfNumbersAreNoStrut) {
    EXPECT_FALSE(strutOf({}, pair));
    EXPECT_FALSE(strutOf({1, 2, 3}, pair));
    EXPECT_FALSE(strutOf({1, 2, 3, 4, 5}, pair));
    EXPECT_FALSE(strutOf({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, pair));
}

TEST(FreeAreaTest, AbsurdNumbersStayWithinReason) {
    const auto strut = strutOf({~0UL, 1UL << 31, 0, 0}, pair);
    ASSERT_TRUE(strut);
    EXPECT_GT(strut->left, pair.width);
    EXPECT_GT(strut->right, pair.width);
    EXPECT_EQ(freeArea(leftMonitor, pair, {*strut}), leftMonitor);
}

} // namespace

} // namespace kelo::test
