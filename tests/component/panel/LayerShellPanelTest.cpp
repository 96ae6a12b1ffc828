#include "linux/panel/LayerShellPanel.h"

#include "component/panel/FakeContent.h"
#include "component/panel/PanelFixture.h"
#include "linux/panel/MonitorScreen.h"
#include "linux/window/WindowIdentity.h"

#include <gtk4-layer-shell.h>

#include <gmock/gmock.h>

#include <map>
#include <string>
#include <vector>

namespace {

/// What the library was told, in order; margins and anchors as they are at last.
struct Record {
    std::vector<std::string> calls;
    std::map<GtkLayerShellEdge, bool> anchors;
    std::map<GtkLayerShellEdge, int> margins;
    GtkWindow* window = nullptr;
    bool wasRealized = false;
    GdkMonitor* monitor = nullptr;
    guint version = 4;
};

Record record;

} // namespace

gboolean gtk_layer_is_supported() {
    return TRUE;
}

guint gtk_layer_get_protocol_version() {
    return record.version;
}

void gtk_layer_set_monitor(GtkWindow*, GdkMonitor* monitor) {
    record.monitor = monitor;
}

void gtk_layer_init_for_window(GtkWindow* window) {
    record.window = window;
    record.wasRealized = gtk_widget_get_realized(GTK_WIDGET(window));
    record.calls.emplace_back("init");
}

void gtk_layer_set_namespace(GtkWindow*, const char* name) {
    record.calls.push_back(std::string("namespace ") + name);
}

void gtk_layer_set_layer(GtkWindow*, GtkLayerShellLayer layer) {
    record.calls.push_back("layer " + std::to_string(layer));
}

void gtk_layer_set_keyboard_mode(GtkWindow*, GtkLayerShellKeyboardMode mode) {
    record.calls.push_back("keyboard " + std::to_string(mode));
}

void gtk_layer_set_anchor(GtkWindow*, GtkLayerShellEdge edge, gboolean anchored) {
    record.anchors[edge] = anchored;
}

void gtk_layer_set_margin(GtkWindow*, GtkLayerShellEdge edge, int margin) {
    record.margins[edge] = margin;
}

namespace kelo::test {

namespace {

using panel::LayerShellPanel;
using testing::AllOf;
using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class LayerShellPanelTest : public testing::Test {
protected:
    static void SetUpTestSuite() { gtk_init(); }
    void SetUp() override { record = {}; }

    platform::Rectangle monitor = *panel::firstMonitor(gdk_display_get_default());
    TestMainLoop loop;
};

TEST_F(LayerShellPanelTest, IsSetUpBeforeItsWindowIsRealized) {
    const auto panel = LayerShellPanel::make(voicePanel());
    EXPECT_FALSE(record.wasRealized);
    EXPECT_THAT(record.calls, ElementsAre("init", "keyboard 2", "namespace kelo-voice", "layer 3"));
    EXPECT_EQ(window::windowIdentity(record.window), panel);
}

TEST_F(LayerShellPanelTest, LiesBelowFullScreenWindowsUnlessItMayCoverThem) {
    auto description = voicePanel();
    description.collectionBehavior = platform::collection_behavior::canJoinAllSpaces;
    const auto panel = LayerShellPanel::make(description);
    EXPECT_THAT(record.calls, Contains("layer 2"));
}

TEST_F(LayerShellPanelTest, WithoutTheRightToTheKeyboardAsksForNone) {
    auto description = voicePanel();
    description.canBecomeKeyWindow = false;
    const auto panel = LayerShellPanel::make(description);
    EXPECT_THAT(record.calls, Contains("keyboard 0"));
    panel->makeKeyAndOrderFront();
    panel->orderOut();
    EXPECT_THAT(record.calls, Not(AnyOf(Contains("keyboard 1"), Contains("keyboard 2"))));
}

TEST_F(LayerShellPanelTest, WithAnOldCompositorDemandsTheKeyboardFromTheBeginning) {
    record.version = 3;
    const auto panel = LayerShellPanel::make(voicePanel());
    EXPECT_THAT(record.calls, AllOf(Contains("keyboard 1"), Not(Contains("keyboard 2"))));
}

TEST_F(LayerShellPanelTest, AppearsOnTheFirstMonitor) {
    const auto panel = LayerShellPanel::make(voicePanel());
    panel->makeKeyAndOrderFront();
    EXPECT_EQ(record.monitor,
              g_list_model_get_item(gdk_display_get_monitors(gdk_display_get_default()), 0));
}

// The shadow takes up the sixteen points that the panel keeps from the edge.
TEST_F(LayerShellPanelTest, InTheMiddleOfTheLowerEdgeIsHeldByThatEdgeAlone) {
    const auto panel = LayerShellPanel::make(voicePanel());
    panel->setFrameOrigin({monitor.midX() - 320, monitor.minY() + 16});
    EXPECT_TRUE(record.anchors[GTK_LAYER_SHELL_EDGE_BOTTOM]);
    EXPECT_FALSE(record.anchors[GTK_LAYER_SHELL_EDGE_LEFT]);
    EXPECT_EQ(record.margins[GTK_LAYER_SHELL_EDGE_BOTTOM], 0);
    EXPECT_EQ(panel->frame(), (platform::Rectangle{monitor.midX() - 320, 16, 640, 620}));
}

TEST_F(LayerShellPanelTest, WithoutAShadowTheMarginIsTheDistance) {
    auto description = voicePanel();
    description.hasShadow = false;
    const auto panel = LayerShellPanel::make(description);
    panel->setFrameOrigin({monitor.midX() - 320, monitor.minY() + 16});
    EXPECT_EQ(record.margins[GTK_LAYER_SHELL_EDGE_BOTTOM], 16);
}

TEST_F(LayerShellPanelTest, ElsewhereItIsHeldByTheLeftEdgeToo) {
    auto description = voicePanel();
    description.hasShadow = false;
    const auto panel = LayerShellPanel::make(description);
    panel->setFrameOrigin({monitor.x + 40, monitor.minY() + 70});
    EXPECT_TRUE(record.anchors[GTK_LAYER_SHELL_EDGE_LEFT]);
    EXPECT_EQ(record.margins[GTK_LAYER_SHELL_EDGE_LEFT], 40);
    EXPECT_EQ(record.margins[GTK_LAYER_SHELL_EDGE_BOTTOM], 70);
}

TEST_F(LayerShellPanelTest, IsShownAndHidden) {
    const auto content = std::make_shared<FakeContent>();
    const auto panel = LayerShellPanel::make(voicePanel());
    panel->setContentView({content, 18, 18, true});
    EXPECT_FALSE(panel->isVisible());
    panel->makeKeyAndOrderFront();
    EXPECT_TRUE(panel->isVisible());
    EXPECT_TRUE(loop.runUntil([&] { return gtk_widget_get_width(content->widget()) == 640; }));
    EXPECT_EQ(gtk_widget_get_height(content->widget()), 620);
    panel->orderOut();
    EXPECT_FALSE(panel->isVisible());
}

TEST_F(LayerShellPanelTest, ClosedByTheDesktopItIsHiddenAndSaysSoAndCanBeShownAgain) {
    const auto panel = LayerShellPanel::make(voicePanel());
    int closed = 0;
    panel->setCloseHandler([&] { ++closed; });
    panel->makeKeyAndOrderFront();
    gtk_window_close(record.window);
    EXPECT_TRUE(loop.runUntil([&] { return !panel->isVisible(); }));
    EXPECT_EQ(closed, 1);
    panel->makeKeyAndOrderFront();
    EXPECT_TRUE(panel->isVisible());
}

} // namespace

} // namespace kelo::test
