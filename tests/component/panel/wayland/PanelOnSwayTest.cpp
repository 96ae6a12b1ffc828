#include "component/panel/FakeContent.h"
#include "component/panel/PanelFixture.h"
#include "component/panel/wayland/WaylandDesktop.h"
#include "linux/panel/DesktopPanels.h"

#include <gmock/gmock.h>

namespace kelo::test {

namespace {

using testing::HasSubstr;

/// The voice panel with the real library on a real compositor that has the layer shell.
class PanelOnSwayTest : public testing::Test {
protected:
    static void SetUpTestSuite() { gtk_init(); }

    PanelOnSwayTest() : content(std::make_shared<FakeContent>()) {
        panel = panels.makePanel(voicePanel());
        using namespace platform::autoresizing;
        panel->setContentView({content, widthSizable | heightSizable, 18, true});
    }
    ~PanelOnSwayTest() override {
        panel.reset();
        for (const auto& name : desktop.outputs())
            if (name != "HEADLESS-1")
                desktop.removeOutput(name);
        desktop.sway("output HEADLESS-1 resolution 1280x1024 scale 1");
    }

    /// As the voice widget shows it.
    void show() {
        const auto area = panels.mainScreen()->visibleFrame;
        panel->setFrameOrigin({area.midX() - 320, area.minY() + 16});
        panel->makeKeyAndOrderFront();
        panel->makeFirstResponder(content);
        awaitKeyboard();
    }
    void awaitKeyboard() {
        desktop.untilAtRest("the panel has the keyboard", [this] { return content->hasCaret(); });
    }
    void awaitKeyboardAt(const Child& other) {
        desktop.untilAtRest("the other has the keyboard",
                            [&] { return other.lines().back() == "active"; });
    }
    void hide() { panel->orderOut(); }

    /// Without the hairline around it.
    std::optional<Picture::Box> boxOn(const std::string& output = "HEADLESS-1") {
        return desktop.picture(output).boxOf(FakeContent::color);
    }
    /// Waits until the panel fills this box of pixels of an output.
    void expectBox(Picture::Box expected, const std::string& output = "HEADLESS-1",
                   int hairline = 1) {
        const Picture::Box inner{expected.x + hairline, expected.y + hairline,
                                 expected.width - 2 * hairline, expected.height - 2 * hairline};
        std::optional<Picture::Box> box;
        const bool came = loop.runUntil([&] { return (box = boxOn(output)) == inner; });
        EXPECT_TRUE(came) << (box ? std::to_string(box->x) + ", " + std::to_string(box->y) + ", " +
                                        std::to_string(box->width) + " x " +
                                        std::to_string(box->height)
                                  : "not there");
    }
    void expectNothingOn(const std::string& output) {
        EXPECT_TRUE(loop.runUntil([&] { return !boxOn(output); })) << "it is on " << output;
    }
    void expectTyped(const std::string& text) {
        desktop.until("typed: " + text, [&] { return content->typed() == text; });
    }

    TestMainLoop loop;
    WaylandDesktop desktop{loop};
    panel::DesktopPanels panels;
    std::shared_ptr<FakeContent> content;
    std::shared_ptr<platform::Panel> panel;
};

TEST_F(PanelOnSwayTest, ItsUserIsToldThatItFloats) {
    EXPECT_THAT(panel::panelStatus(), HasSubstr("floats over all windows"));
}

TEST_F(PanelOnSwayTest, IsInTheMiddleAboveTheLowerEdge) {
    show();
    expectBox({320, 388, 640, 620});
    desktop.keepPicture("sway-panel");
}

TEST_F(PanelOnSwayTest, HasRoundCorners) {
    show();
    expectBox({320, 388, 640, 620});
    const auto picture = desktop.picture();
    for (const auto& [x, y] : {std::pair{323, 391}, {956, 391}, {323, 1004}, {956, 1004}})
        EXPECT_NE(picture.at(x, y), FakeContent::color) << x << ", " << y;
}

TEST_F(PanelOnSwayTest, KeepsClearOfABar) {
    const auto bar = desktop.open("bar");
    show();
    expectBox({320, 348, 640, 620});
    desktop.keepPicture("sway-panel-above-bar");
}

TEST_F(PanelOnSwayTest, LiesAboveAFullScreenWindow) {
    const auto other = desktop.open("full-screen");
    show();
    expectBox({320, 388, 640, 620});
    desktop.keepPicture("sway-panel-full-screen");
    desktop.type("hello");
    expectTyped("hello");
}

TEST_F(PanelOnSwayTest, GivesTheKeyboardBackToTheWindowThatHadIt) {
    const auto other = desktop.open("window");
    for (const std::string text : {"one", "two"}) {
        show();
        content->clear();
        desktop.type(text);
        expectTyped(text);
        hide();
        awaitKeyboardAt(*other);
    }
    desktop.type("back");
    desktop.until("it is typed into", [&] { return other->last("text ") == "back"; });
}

TEST_F(PanelOnSwayTest, AClickOutsideTakesTheKeyboardAwayAndOneInsideBrings) {
    const auto other = desktop.open("full-screen");
    show();
    desktop.click(100, 100);
    awaitKeyboardAt(*other);
    desktop.type("out");
    desktop.until("it is typed into", [&] { return other->last("text ") == "out"; });
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(content->typed(), "");
    desktop.click(640, 700);
    desktop.type("in");
    expectTyped("in");
}

TEST_F(PanelOnSwayTest, AskedForAgainItTakesTheKeyboardAgain) {
    const auto other = desktop.open("full-screen");
    show();
    desktop.click(100, 100);
    awaitKeyboardAt(*other);
    panel->makeKeyAndOrderFront();
    awaitKeyboard();
    desktop.type("again");
    expectTyped("again");
}

TEST_F(PanelOnSwayTest, IsOnTheFirstOfTwoOutputsWhicheverIsInUse) {
    const std::string second = desktop.addOutput(800, 700);
    desktop.sway("focus output " + second);
    show();
    expectBox({320, 388, 640, 620});
    expectNothingOn(second);
}

TEST_F(PanelOnSwayTest, GoesToTheOtherOutputWhenItsOwnIsRemoved) {
    const std::string second = desktop.addOutput(800, 700);
    show();
    expectBox({320, 388, 640, 620});
    desktop.sway("output HEADLESS-1 disable");
    expectBox({80, 64, 640, 620}, second);
    EXPECT_TRUE(panel->isVisible());
    hide();
    expectNothingOn(second);
    show();
    expectBox({80, 64, 640, 620}, second);
    desktop.sway("output HEADLESS-1 enable");
}

TEST_F(PanelOnSwayTest, IsSharpAtAFractionalScale) {
    // Points that are whole numbers of pixels: a compositor has to blur others.
    desktop.sway("output HEADLESS-1 resolution 1200x1020 scale 1.5");
    show();
    expectBox({120, 66, 960, 930}, "HEADLESS-1", 2);
    desktop.keepPicture("sway-panel-150");
}

} // namespace

} // namespace kelo::test
