#include "linux/panel/PlainPanel.h"
#include "component/panel/FakeContent.h"
#include "component/panel/wayland/WaylandDesktop.h"
#include "linux/panel/DesktopPanels.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace kelo::test {

namespace {

using testing::AllOf;
using testing::HasSubstr;

/// The voice panel's measures on a Wayland desktop without the layer shell.
class PlainPanelTest : public testing::Test {
protected:
    static void SetUpTestSuite() { gtk_init(); }

    PlainPanelTest() {
        platform::PanelDescription description;
        description.contentRectangle = {0, 0, 640, 620};
        description.canBecomeKeyWindow = true;
        description.opaque = false;
        description.backgroundColor = platform::BackgroundColor::clear;
        description.hasShadow = true;
        panel = panel::PlainPanel::make(description);
        content = std::make_shared<FakeContent>();
        using namespace platform::autoresizing;
        panel->setContentView({content, widthSizable | heightSizable, 18, true});
    }

    void show() {
        panel->makeKeyAndOrderFront();
        panel->makeFirstResponder(content);
        desktop.untilAtRest("the panel has the keyboard", [this] { return content->hasCaret(); });
    }
    /// Waits until the panel is drawn, and returns the picture.
    Picture shown() {
        Picture picture;
        desktop.until("the panel is drawn", [&] {
            picture = desktop.picture();
            return picture.boxOf(FakeContent::color).has_value();
        });
        return picture;
    }

    TestMainLoop loop;
    WaylandDesktop desktop{loop};
    std::shared_ptr<platform::Panel> panel;
    std::shared_ptr<FakeContent> content;
};

TEST_F(PlainPanelTest, AppearsTakesKeysAndHides) {
    for (const std::string text : {"first", "second"}) {
        show();
        EXPECT_TRUE(panel->isVisible());
        content->clear();
        desktop.type(text);
        EXPECT_TRUE(loop.runUntil([&] { return content->typed() == text; })) << content->typed();
        panel->orderOut();
        EXPECT_FALSE(panel->isVisible());
    }
}

TEST_F(PlainPanelTest, HasNeitherTitleNorBorderAndRoundCorners) {
    show();
    const auto picture = shown();
    desktop.keepPicture("sway-plain");
    const auto box = *picture.boxOf(FakeContent::color);
    // A hairline lies around the contents.
    EXPECT_EQ(box.width, 638);
    EXPECT_EQ(box.height, 618);
    const int left = box.x - 1;
    const int top = box.y - 1;
    const int right = box.x + box.width;
    const int bottom = box.y + box.height;
    // Outside of each edge, and in each corner.
    for (const auto& [x, y] : {std::pair{left + 320, top - 1},
                               {left + 320, bottom + 1},
                               {left - 1, top + 310},
                               {right + 1, top + 310},
                               {left, top},
                               {right, top},
                               {left, bottom},
                               {right, bottom}})
        EXPECT_EQ(picture.at(x, y), 0xffffffU) << x << ", " << y;
}

// Where a compositor keeps a panel at its size in the middle of a larger square, it stays round.
TEST_F(PlainPanelTest, HasSquareCornersWhereItTouchesABorderOfTheDesktops) {
    show();
    shown();
    desktop.sway("[title=\"^Kelo voice assistant$\"] floating disable");
    EXPECT_TRUE(loop.runUntil([this] {
        const auto picture = desktop.picture();
        const auto box = picture.boxOf(FakeContent::color);
        const bool hasBorder = picture.at(1, 500) != 0xffffffU;
        if (!box || !hasBorder)
            return false;
        const bool touches = picture.at(std::max(0, box->x - 2), box->y + 300) != 0xffffffU;
        return (picture.at(box->x + 3, box->y + 3) == FakeContent::color) == touches;
    }));
    desktop.keepPicture("sway-plain-tiled");
}

TEST_F(PlainPanelTest, ClosedByTheDesktopItIsHiddenAndSaysSo) {
    bool isClosed = false;
    panel->setCloseHandler([&] { isClosed = true; });
    show();
    desktop.sway("[title=\"^Kelo voice assistant$\"] kill");
    EXPECT_TRUE(loop.runUntil([&] { return isClosed; }));
    EXPECT_FALSE(panel->isVisible());
    show();
    EXPECT_TRUE(panel->isVisible());
}

// Where the program is built with the layer shell, such a panel is no window here.
#ifndef KELO_LAYER_SHELL
TEST_F(PlainPanelTest, ItsUserIsToldThatTheBuildMakesItAnOrdinaryWindow) {
    EXPECT_THAT(panel::panelStatus(),
                AllOf(HasSubstr("ordinary window"), HasSubstr("made without gtk4-layer-shell")));
}
#endif

TEST_F(PlainPanelTest, TheMainScreenIsTheWholeMonitor) {
    const auto screen = panel::DesktopPanels().mainScreen();
    ASSERT_TRUE(screen);
    EXPECT_EQ(screen->visibleFrame, (platform::Rectangle{0, 0, 1280, 1024}));
}

} // namespace

} // namespace kelo::test
