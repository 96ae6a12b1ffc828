#include "linux/webkit/navigation/SaveMenu.h"

#include "base/Translation.h"

#include <optional>
#include <utility>

namespace kelo::webkit {

namespace {

struct Offer {
    std::string label;
    const char* address;
};

/// What an entry of the engine's would save; nothing for other entries.
std::optional<Offer> offerOf(WebKitContextMenuItem* entry, WebKitHitTestResult* place) {
    switch (webkit_context_menu_item_get_stock_action(entry)) {
    case WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_LINK_TO_DISK:
        return Offer{translated("Save Link"), webkit_hit_test_result_get_link_uri(place)};
    case WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_IMAGE_TO_DISK:
        return Offer{translated("Save Image"), webkit_hit_test_result_get_image_uri(place)};
    case WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_VIDEO_TO_DISK:
        return Offer{translated("Save Video"), webkit_hit_test_result_get_media_uri(place)};
    case WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_AUDIO_TO_DISK:
        return Offer{translated("Save Audio"), webkit_hit_test_result_get_media_uri(place)};
    default:
        return std::nullopt;
    }
}

} // namespace

SaveMenu::SaveMenu(WebKitWebView* view, Save save)
    : save(std::make_shared<Save>(std::move(save))),
      connection(gobject::connectSignal(
          view, "context-menu",
          +[](WebKitWebView*, WebKitContextMenu* menu, WebKitHitTestResult* place,
              SaveMenu* self) -> gboolean {
              self->opened(menu, place);
              return FALSE;
          },
          this)) {}

// A download that one of the engine's entries has started cannot be told from one that a page
// starts by itself: since version 2.50 the engine does not signal that an entry is chosen.
void SaveMenu::opened(WebKitContextMenu* menu, WebKitHitTestResult* place) {
    const unsigned count = webkit_context_menu_get_n_items(menu); // which replacing leaves
    for (unsigned position = 0; position < count; ++position) {
        WebKitContextMenuItem* const entry =
            webkit_context_menu_get_item_at_position(menu, static_cast<int>(position));
        const auto offer = offerOf(entry, place);
        if (!offer || !offer->address)
            continue;
        webkit_context_menu_insert(menu, makeEntry(offer->label, offer->address),
                                   static_cast<int>(position));
        webkit_context_menu_remove(menu, entry);
    }
}

WebKitContextMenuItem* SaveMenu::makeEntry(const std::string& label, const char* address) {
    struct Choice {
        std::weak_ptr<Save> save;
        std::string address;
    };
    const auto action = gobject::GObjectPointer<GSimpleAction>::adopt(
        g_simple_action_new("save-from-page", nullptr));
    const auto chosen = +[](GSimpleAction*, GVariant*, std::shared_ptr<Choice>* choice) {
        if (const auto save = (*choice)->save.lock())
            (*save)((*choice)->address);
    };
    gobject::connectWithState(action.get(), "activate", chosen,
                              std::make_shared<Choice>(Choice{save, address}));
    return webkit_context_menu_item_new_from_gaction(G_ACTION(action.get()), label.c_str(),
                                                     nullptr);
}

} // namespace kelo::webkit
