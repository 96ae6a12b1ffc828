#include "component/panel/PanelFixture.h"
#include "linux/gobject/SignalHandler.h"

#include <chrono>

namespace kelo::test {

namespace {

/// Panels that are asked for in another way than the voice widget asks.
class PanelDescriptionTest : public PanelFixture {
protected:
    void make(const platform::PanelDescription& description) {
        panel = panels.makePanel(description);
        panel->setContentView({content, 18, 18, true});
        panel->setFrameOrigin({320, 120});
    }
    bool isManaged() {
        for (const auto& window : windows.managed())
            if (window.identifier == panelWindow())
                return true;
        return false;
    }
};

TEST_F(PanelDescriptionTest, HidesWhenAnotherProgramTakesTheKeyboardIfItIsToldTo) {
    auto description = voicePanel();
    description.hidesOnDeactivate = true;
    make(description);
    screen::OtherProgram other;
    settle(other);
    for (int round = 0; round < 2; ++round) {
        show();
        until("the caret blinks", [this] { return content->hasCaret(); });
        EXPECT_TRUE(panel->isVisible());
        other.takeKeyboard();
        until("the panel hides", [this] { return !panel->isVisible(); });
        EXPECT_EQ(windows.focused(), other.window());
    }
}

TEST_F(PanelDescriptionTest, MayGoWhileItLooksWhetherItIsToHide) {
    auto description = voicePanel();
    description.hidesOnDeactivate = true;
    make(description);
    screen::OtherProgram other;
    settle(other);
    show();
    until("the caret blinks", [this] { return content->hasCaret(); });
    bool looks = false;
    const gobject::SignalConnection active = gobject::connectSignal(
        gtk_widget_get_root(content->widget()), "notify::is-active",
        +[](GObject*, GParamSpec*, bool* looks) { *looks = true; }, &looks);
    other.takeKeyboard();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    // Idle work does not run within an iteration that brings an event.
    while (!looks && std::chrono::steady_clock::now() < deadline)
        g_main_context_iteration(nullptr, FALSE);
    ASSERT_TRUE(looks);
    panel.reset();
    EXPECT_EQ(windows.focused(), other.window());
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
}

TEST_F(PanelDescriptionTest, StaysWhenAWindowOfOursTakesTheKeyboard) {
    auto description = voicePanel();
    description.hidesOnDeactivate = true;
    make(description);
    show();
    until("the caret blinks", [this] { return content->hasCaret(); });
    const auto ours = gobject::GObjectPointer<GtkWindow>::share(GTK_WINDOW(gtk_window_new()));
    gtk_window_set_modal(ours.get(), TRUE);
    gtk_window_present(ours.get());
    until("our window has the keyboard", [&] { return gtk_window_is_active(ours.get()); });
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    EXPECT_TRUE(panel->isVisible());
    gtk_window_destroy(ours.get());
}

TEST_F(PanelDescriptionTest, GivesTheKeyboardBackWhenTheDesktopClosesIt) {
    screen::OtherProgram other;
    settle(other);
    show();
    gtk_window_close(GTK_WINDOW(gtk_widget_get_root(content->widget())));
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(windows.focused(), other.window());
    show();
    typeIntoPanel("again");
}

TEST_F(PanelDescriptionTest, StaysWhenAnotherProgramTakesTheKeyboardUnlessItIsToldToHide) {
    screen::OtherProgram other;
    settle(other);
    show();
    until("the caret blinks", [this] { return content->hasCaret(); });
    other.takeKeyboard();
    until("the caret is gone", [this] { return !content->hasCaret(); });
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(PanelDescriptionTest, IsAnOrdinaryWindowWhenItDoesNotFloat) {
    auto description = voicePanel();
    description.level = platform::WindowLevel::normal;
    description.floatingPanel = false;
    make(description);
    panel->makeKeyAndOrderFront();
    until("the panel is on the screen",
          [this] { return windows.describe(panelWindow()).isMapped; });
    EXPECT_FALSE(windows.describe(panelWindow()).overridesRedirect);
    if (hasManager())
        until("the window manager manages it", [this] { return isManaged(); });
}

TEST_F(PanelDescriptionTest, FloatsByItsLevelOrAsAFloatingPanel) {
    auto byLevel = voicePanel();
    byLevel.floatingPanel = false;
    auto asFloatingPanel = voicePanel();
    asFloatingPanel.level = platform::WindowLevel::normal;
    for (const auto& description : {byLevel, asFloatingPanel}) {
        make(description);
        show();
        EXPECT_TRUE(windows.describe(panelWindow()).overridesRedirect);
    }
}

} // namespace

} // namespace kelo::test
