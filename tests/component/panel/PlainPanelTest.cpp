#include "component/http/TestMainLoop.h"
#include "component/panel/FakeContent.h"
#include "linux/panel/DesktopPanels.h"

#include <gio/gio.h>
#include <gmock/gmock.h>

#include <cstdlib>

namespace kelo::test {

namespace {

using testing::HasSubstr;

/// The voice panel's measures on a Wayland desktop without the layer shell.
class PlainPanelTest : public testing::Test {
protected:
    PlainPanelTest() {
        platform::PanelDescription description;
        description.contentRectangle = {0, 0, 640, 620};
        description.canBecomeKeyWindow = true;
        description.opaque = false;
        description.backgroundColor = platform::BackgroundColor::clear;
        description.hasShadow = true;
        panel = panels.makePanel(description);
        content = std::make_shared<FakeContent>();
        panel->setContentView({content, 18, 18, true});
    }

    /// Runs a tool beside the program, which goes on meanwhile.
    void run(const std::vector<const char*>& command) {
        std::vector<const char*> arguments = command;
        arguments.push_back(nullptr);
        const auto process = gobject::GObjectPointer<GSubprocess>::adopt(
            g_subprocess_newv(arguments.data(), G_SUBPROCESS_FLAGS_NONE, nullptr));
        ASSERT_TRUE(process) << command.front();
        bool ended = false;
        const GAsyncReadyCallback done = [](GObject*, GAsyncResult*, gpointer flag) {
            *static_cast<bool*>(flag) = true;
        };
        g_subprocess_wait_async(process.get(), nullptr, done, &ended);
        ASSERT_TRUE(loop.runUntil([&] { return ended; }));
        EXPECT_TRUE(g_subprocess_get_successful(process.get())) << command.front();
    }

    TestMainLoop loop;
    panel::DesktopPanels panels;
    std::shared_ptr<platform::Panel> panel;
    std::shared_ptr<FakeContent> content;
};

TEST_F(PlainPanelTest, AppearsTakesKeysAndHides) {
    for (const std::string text : {"first", "second"}) {
        panel->makeKeyAndOrderFront();
        panel->makeFirstResponder(content);
        ASSERT_TRUE(loop.runUntil([this] { return gtk_widget_get_width(content->widget()) > 0; }));
        EXPECT_TRUE(panel->isVisible());
        // This desktop has no keyboard of its own: the tool plugs one in, and waits before it
        // types.
        content->clear();
        run({"wtype", "-s", "300", text.c_str()});
        EXPECT_TRUE(loop.runUntil([&] { return content->typed() == text; })) << content->typed();
        if (const char* const folder = std::getenv("KELO_PICTURES"))
            run({"grim", (std::string(folder) + "/sway-" + text + ".png").c_str()});
        panel->orderOut();
        EXPECT_FALSE(panel->isVisible());
    }
}

TEST_F(PlainPanelTest, ItsUserIsToldThatItIsAnOrdinaryWindow) {
    EXPECT_THAT(panel::panelStatus(), HasSubstr("ordinary window"));
}

TEST_F(PlainPanelTest, TheMainScreenIsTheWholeMonitor) {
    const auto screen = panels.mainScreen();
    ASSERT_TRUE(screen);
    EXPECT_EQ(screen->visibleFrame, (platform::Rectangle{0, 0, 1280, 1024}));
}

} // namespace

} // namespace kelo::test
