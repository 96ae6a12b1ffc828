#include "linux/webkit/content/ContextMenus.h"

#include "linux/gobject/GLibHandles.h"

namespace kelo::webkit {

namespace {

bool isUseless(WebKitContextMenuAction action) {
    switch (action) {
    case WEBKIT_CONTEXT_MENU_ACTION_OPEN_LINK_IN_NEW_WINDOW:
    case WEBKIT_CONTEXT_MENU_ACTION_OPEN_IMAGE_IN_NEW_WINDOW:
    case WEBKIT_CONTEXT_MENU_ACTION_OPEN_FRAME_IN_NEW_WINDOW:
    case WEBKIT_CONTEXT_MENU_ACTION_OPEN_VIDEO_IN_NEW_WINDOW:
    case WEBKIT_CONTEXT_MENU_ACTION_OPEN_AUDIO_IN_NEW_WINDOW:
    case WEBKIT_CONTEXT_MENU_ACTION_INSERT_EMOJI:
        return true;
    default:
        return false;
    }
}

bool isSeparator(WebKitContextMenu* menu, int position) {
    WebKitContextMenuItem* const item =
        webkit_context_menu_get_item_at_position(menu, static_cast<unsigned>(position));
    return item && webkit_context_menu_item_is_separator(item);
}

void removeAt(WebKitContextMenu* menu, int position) {
    webkit_context_menu_remove(
        menu, webkit_context_menu_get_item_at_position(menu, static_cast<unsigned>(position)));
}

// From the end, so that positions hold. A separator stays only between two items.
gboolean shown(WebKitWebView*, WebKitContextMenu* menu, WebKitHitTestResult*, gpointer) {
    const auto count = [menu] { return static_cast<int>(webkit_context_menu_get_n_items(menu)); };
    for (int position = count() - 1; position >= 0; --position)
        if (isUseless(webkit_context_menu_item_get_stock_action(
                webkit_context_menu_get_item_at_position(menu, static_cast<unsigned>(position)))))
            removeAt(menu, position);
    for (int position = count() - 1; position >= 0; --position)
        if (isSeparator(menu, position) &&
            (position == 0 || position == count() - 1 || isSeparator(menu, position - 1)))
            removeAt(menu, position);
    return count() == 0;
}

} // namespace

void removeUselessMenuItems(WebKitWebView* view) {
    g_signal_connect(view, "context-menu", G_CALLBACK(shown), nullptr);
}

} // namespace kelo::webkit
