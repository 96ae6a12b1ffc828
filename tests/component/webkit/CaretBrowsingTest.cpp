#include "component/webkit/WindowFixture.h"
#include "testing/screen/Keyboard.h"

namespace kelo::test {

/// A page that has the keyboard, and real keys.
class CaretBrowsing : public WindowFixture {
protected:
    void SetUp() override {
        server = site({{"/", "<p id='text'>A line to walk along.</p><script>keys = '';"
                             "onkeydown = (event) => { keys += event.key + ' '; }</script>"}});
        makeView(server->url());
        showInWindow();
        open(server->url("/"));
        gtk_widget_grab_focus(GTK_WIDGET(native()));
        ASSERT_TRUE(loop.runUntil([this] {
            gtk_window_present(GTK_WINDOW(window));
            return gtk_window_is_active(GTK_WINDOW(window));
        }));
    }

    void press(const std::string& key, const std::vector<screen::KeySymbol>& modifiers = {}) {
        keyboard.press(screen::keySymbol(key), modifiers);
    }
    bool isOn() const {
        return webkit_settings_get_enable_caret_browsing(webkit_web_view_get_settings(native()));
    }
    bool waitUntil(bool on) {
        return loop.runUntil([this, on] { return isOn() == on; });
    }

    std::unique_ptr<MisbehavingServer> server;
    const screen::XConnection connection;
    const screen::Keyboard keyboard{connection};
};

TEST_F(CaretBrowsing, IsTurnedOnAndOffWithF7) {
    EXPECT_FALSE(isOn());
    press("F7");
    ASSERT_TRUE(waitUntil(true));
    press("F7");
    EXPECT_TRUE(waitUntil(false));
}

TEST_F(CaretBrowsing, ArrowKeysMoveACaretInTheText) {
    evaluate("getSelection().collapse(document.getElementById('text').firstChild, 0); 1");
    press("F7");
    ASSERT_TRUE(waitUntil(true));
    press("Right");
    EXPECT_TRUE(waitForScript("getSelection().anchorOffset", "1"));
}

TEST_F(CaretBrowsing, PageDoesNotGetTheKey) {
    press("F7");
    ASSERT_TRUE(waitUntil(true));
    press("a");
    EXPECT_TRUE(waitForScript("keys", "a "));
}

TEST_F(CaretBrowsing, F7WithAModifierIsThePagesOwn) {
    press("F7", {screen::keySymbol("Control_L")});
    EXPECT_TRUE(waitForScript("keys", "Control F7 "));
    EXPECT_FALSE(isOn());
}

} // namespace kelo::test
