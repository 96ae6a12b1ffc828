#include "component/webkit/MainWindowFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

/// The engine's own menus, by real clicks.
class ContextMenu : public MainWindowFixture {
protected:
    void SetUp() override {
        openInMainWindow({{"/", R"(<body style='margin: 0'><a id=link href='/x'>a link</a>
            <p><img id=image width=60 height=60 src='/image.png'></p>
            <p><a href='/x'><img id=both width=60 height=60 src='/image.png'></a></p>
            <p><textarea id=field spellcheck=true>wrnog</textarea></p>)"}});
        // After the program's own handler.
        g_signal_connect_swapped(native(), "context-menu", G_CALLBACK(opened), this);
    }

    void openMenuOf(const std::string& selector) {
        items.clear();
        pointer.click(placeOf(selector), 3);
        ASSERT_TRUE(loop.runUntil([this] { return !items.empty(); }));
    }
    static gboolean opened(ContextMenu* self, WebKitContextMenu* menu) {
        for (GList* item = webkit_context_menu_get_items(menu); item; item = item->next)
            self->items.push_back(
                webkit_context_menu_item_is_separator(WEBKIT_CONTEXT_MENU_ITEM(item->data))
                    ? 0
                    : webkit_context_menu_item_get_stock_action(
                          WEBKIT_CONTEXT_MENU_ITEM(item->data)));
        return TRUE; // the menu would take the keyboard
    }

    std::vector<int> items; ///< 0 for a separator
};

TEST_F(ContextMenu, OfALinkOpensNoWindow) {
    openMenuOf("#link");
    EXPECT_THAT(items,
                ElementsAre(WEBKIT_CONTEXT_MENU_ACTION_OPEN_LINK, WEBKIT_CONTEXT_MENU_ACTION_CUSTOM,
                            WEBKIT_CONTEXT_MENU_ACTION_COPY_LINK_TO_CLIPBOARD));
}

TEST_F(ContextMenu, OfALinkedImageKeepsItsTwoPartsApart) {
    openMenuOf("#both");
    EXPECT_THAT(items,
                ElementsAre(WEBKIT_CONTEXT_MENU_ACTION_OPEN_LINK, WEBKIT_CONTEXT_MENU_ACTION_CUSTOM,
                            WEBKIT_CONTEXT_MENU_ACTION_COPY_LINK_TO_CLIPBOARD, 0,
                            WEBKIT_CONTEXT_MENU_ACTION_CUSTOM,
                            WEBKIT_CONTEXT_MENU_ACTION_COPY_IMAGE_URL_TO_CLIPBOARD));
}

TEST_F(ContextMenu, OfAFieldHasNoEmojiThatDoNotCome) {
    openMenuOf("#field");
    EXPECT_THAT(items, AllOf(Contains(WEBKIT_CONTEXT_MENU_ACTION_PASTE),
                             Contains(WEBKIT_CONTEXT_MENU_ACTION_UNICODE),
                             Not(Contains(WEBKIT_CONTEXT_MENU_ACTION_INSERT_EMOJI))));
}

TEST_F(ContextMenu, OfAMisspeltWordHasBetterOnes) {
    auto* const context = webkit_web_view_get_context(native());
    const char* const english[] = {"en_US", nullptr};
    webkit_web_context_set_spell_checking_languages(context, english);
    webkit_web_context_set_spell_checking_enabled(context, TRUE);
    const char* const* const found = webkit_web_context_get_spell_checking_languages(context);
    if (!found || !found[0])
        GTEST_SKIP() << "there is no English dictionary";
    pointer.click(placeOf("#field"));
    openMenuOf("#field");
    EXPECT_THAT(items, Contains(WEBKIT_CONTEXT_MENU_ACTION_SPELLING_GUESS));
}

} // namespace kelo::test
