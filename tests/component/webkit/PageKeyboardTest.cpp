#include "component/webkit/MainWindowFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class PageKeyboard : public MainWindowFixture {
protected:
    void SetUp() override {
        openInMainWindow({{"/", R"(<body id=body><a id=first href='#1'>first</a>
            <a id=second href='#2'>second</a> <input id=field value=words><script>
            heard = ''; taken = '';
            const take = (event) => {
              heard += event.key ?? 'menu:' + event.target.id;
              heard += ' ';
              if (taken === (event.key ?? 'menu')) event.preventDefault();
            };
            onkeydown = oncontextmenu = take;
            </script>)"}});
    }

    // A window that goes while a menu has the keyboard takes the keyboard with it.
    void TearDown() override {
        for (const char* const popover : {"GtkPopoverMenu", "GtkEmojiChooser"})
            if (GtkWidget* const open = childOfView(popover))
                gtk_popover_popdown(GTK_POPOVER(open));
        loop.runUntil([this] { return !menu() && !childOfView("GtkEmojiChooser"); });
    }

    void focusElement(const std::string& id) {
        gtk_widget_grab_focus(GTK_WIDGET(native()));
        evaluate("document.getElementById('" + id + "').focus(); heard = ''; 1");
    }
    /// The identifier of the page's element, "button" for the overlay's, or "title bar".
    std::string focus() {
        const auto* widget = window->get_focus();
        if (!widget)
            return "nothing";
        if (widget->gobj() == GTK_WIDGET(native()))
            return evaluate("document.activeElement.id");
        return widget->is_ancestor(*window->get_titlebar()) ? "title bar" : "button";
    }
    /// Where the focus is at first, and after each press.
    std::vector<std::string> walk(int steps, const std::vector<std::string>& modifiers = {}) {
        std::vector<std::string> way{focus()};
        while (steps-- > 0) {
            press("Tab", modifiers);
            EXPECT_TRUE(loop.runUntil([&] { return focus() != way.back(); }))
                << "the focus stays on " << way.back();
            settle();
            way.push_back(focus());
        }
        return way;
    }
    GtkWidget* menu() const { return childOfView("GtkPopoverMenu"); }
    bool waitForMenu() {
        return loop.runUntil([this] { return menu() != nullptr; });
    }
    void closeMenu() {
        press("Escape");
        ASSERT_TRUE(loop.runUntil([this] { return !menu(); }));
    }
    std::string labels() const { return labelsBelow(menu()); }

private:
    static std::string labelsBelow(GtkWidget* widget) {
        std::string texts;
        for (GtkWidget* child = gtk_widget_get_first_child(widget); child;
             child = gtk_widget_get_next_sibling(child)) {
            if (GTK_IS_LABEL(child) && gtk_widget_get_mapped(child))
                texts += std::string(gtk_label_get_text(GTK_LABEL(child))) + "|";
            texts += labelsBelow(child);
        }
        return texts;
    }
};

TEST_F(PageKeyboard, TabWalksThroughThePageTheOverlayAndTheTitleBarAndRoundAgain) {
    EXPECT_THAT(walk(7), ElementsAre("body", "first", "second", "field", "button", "title bar",
                                     "body", "first"));
}

TEST_F(PageKeyboard, ShiftTabWalksTheSameWayBack) {
    EXPECT_THAT(walk(7, {"Shift_L"}), ElementsAre("body", "field", "second", "first", "title bar",
                                                  "button", "body", "field"));
}

TEST_F(PageKeyboard, PageThatTakesTabKeepsTheKeyboard) {
    focusElement("field");
    evaluate("taken = 'Tab'; 1");
    press("Tab");
    ASSERT_TRUE(waitForScript("heard", "Tab "));
    settle();
    EXPECT_EQ(focus(), "field");
}

TEST_F(PageKeyboard, MenuKeyOpensTheMenuOfTheFocusedLink) {
    focusElement("first");
    press("Menu");
    ASSERT_TRUE(waitForMenu());
    EXPECT_EQ(labels(), "Open Link|Copy Link Address|Select All|");
    EXPECT_EQ(evaluate("heard"), "ContextMenu menu:first ");
    closeMenu();
    EXPECT_EQ(focus(), "first");
}

TEST_F(PageKeyboard, MenuOpensTheLink) {
    focusElement("second");
    press("F10", {"Shift_L"});
    ASSERT_TRUE(waitForMenu());
    press("Return");
    EXPECT_TRUE(waitForScript("location.hash", "#2"));
}

TEST_F(PageKeyboard, MenuOpensNoOtherLinkThatGotTheFocusSince) {
    focusElement("second");
    press("Menu");
    ASSERT_TRUE(waitForMenu());
    evaluate("document.getElementById('first').focus(); 1");
    press("Return");
    ASSERT_TRUE(loop.runUntil([this] { return !menu(); }));
    settle();
    settle();
    EXPECT_EQ(evaluate("location.hash"), "");
}

TEST_F(PageKeyboard, MenuOfAFieldCutsWhatIsSelected) {
    focusElement("field");
    evaluate("field.select(); 1");
    press("Menu");
    ASSERT_TRUE(waitForMenu());
    EXPECT_EQ(labels(), "Cut|Copy|Paste|Select All|");
    press("Return");
    EXPECT_TRUE(waitForScript("field.value", ""));
}

TEST_F(PageKeyboard, MenuOffersNoCopyOfAPassword) {
    focusElement("field");
    evaluate("field.type = 'password'; field.select(); 1");
    press("Menu");
    ASSERT_TRUE(waitForMenu());
    EXPECT_EQ(labels(), "Paste|Select All|");
}

TEST_F(PageKeyboard, PageMayShowAMenuOfItsOwn) {
    focusElement("first");
    for (const std::string taken : {"menu", "ContextMenu"}) {
        evaluate("heard = ''; taken = '" + taken + "'; 1");
        press("Menu");
        ASSERT_TRUE(waitForScript("heard.includes(taken)", "true"));
        settle();
        settle();
        EXPECT_FALSE(menu()) << taken;
    }
}

TEST_F(PageKeyboard, HiddenTextViewShowsNothingOfItsOwn) {
    focusElement("first");
    for (const std::string key : {"period", "semicolon"}) {
        press(key, {"Control_L"});
        settle();
        EXPECT_FALSE(childOfView("GtkEmojiChooser")) << "a link takes no emoji";
    }
    press("Menu");
    ASSERT_TRUE(waitForMenu());
    GtkWidget* const hidden = childOfView("GtkTextView");
    ASSERT_TRUE(hidden);
    EXPECT_FALSE(gtk_widget_get_first_child(hidden));
}

TEST_F(PageKeyboard, EmojiChooserWritesIntoTheField) {
    focusElement("field");
    evaluate("field.value = ''; 1");
    press("period", {"Control_L"});
    ASSERT_TRUE(loop.runUntil([this] { return childOfView("GtkEmojiChooser") != nullptr; }));
    g_signal_emit_by_name(childOfView("GtkEmojiChooser"), "emoji-picked", "\xf0\x9f\x9a\x80");
    EXPECT_TRUE(waitForScript("field.value", "\xf0\x9f\x9a\x80"));
}

// A key that the page has left alone must not count again: the next key in a field would open the
// chooser.
TEST_F(PageKeyboard, EmojiKeyOutsideAFieldIsForgotten) {
    focusElement("first");
    press("period", {"Control_L"});
    settle();
    focusElement("field");
    press("x");
    ASSERT_TRUE(waitForScript("heard", "x "));
    settle();
    EXPECT_FALSE(childOfView("GtkEmojiChooser"));
}

// The toolkit's simplest input method: the number of a character, typed after Control+Shift+u.
TEST_F(PageKeyboard, InputMethodsStillWork) {
    focusElement("field");
    evaluate("field.value = ''; 1");
    press("u", {"Control_L", "Shift_L"});
    for (const char* const key : {"e", "9", "Return"})
        press(key);
    EXPECT_TRUE(waitForScript("field.value", "\xc3\xa9"));
}

} // namespace kelo::test
