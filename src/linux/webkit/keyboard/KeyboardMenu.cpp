#include "linux/webkit/keyboard/KeyboardMenu.h"

#include "base/Translation.h"
#include "base/async/Spawn.h"
#include "base/async/Task.h"
#include "linux/gobject/AsyncResult.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"

#include <cmath>
#include <string>

namespace kelo::webkit {

namespace {

// In a world of our own, because the page's scripts can replace what these call. WebKitGTK 2.52
// forgets such a world after each script, so none leaves the next one anything; older versions keep
// it, so nothing may be declared in it that cannot be declared again.
constexpr const char* world = "kelo-menu";

/// The innermost element with the focus, and where its document stands in the view.
constexpr const char* findFocus = R"(function findFocus() {
  let target = document.activeElement ?? document.body, x = 0, y = 0;
  for (;;) {
    const inner = target.shadowRoot?.activeElement ?? target.contentDocument?.activeElement;
    if (!inner) break;
    if (target.contentDocument) {
      const box = target.getBoundingClientRect();
      x += box.left; y += box.top;
    }
    target = inner;
  }
  return {target, x, y};
}
)";

// The event is not trusted, which pages rarely mind.
constexpr const char* describeFocus = R"((() => {
  const {target, x, y} = findFocus();
  const page = target.ownerDocument, view = page.defaultView, selection = page.getSelection();
  const isField = /^(input|textarea)$/.test(target.localName);
  const editable = isField ? !target.readOnly && !target.disabled && 'selectionStart' in target
                           : target.isContentEditable;
  const selected = isField ? target.selectionStart !== target.selectionEnd
                           : !selection.isCollapsed;
  let box = target.getBoundingClientRect();
  if (!isField && selection.rangeCount && target.contains(selection.focusNode)) {
    const caret = [...selection.getRangeAt(0).getClientRects()].pop();
    if (caret) box = caret;
  }
  const left = Math.min(Math.max(box.left, 0), view.innerWidth - 1);
  const bottom = Math.min(Math.max(box.bottom, 0), view.innerHeight - 1);
  const event = new view.MouseEvent('contextmenu', {bubbles: true, cancelable: true, composed: true,
                                                    view, button: 2, clientX: left, clientY: bottom});
  if (!target.dispatchEvent(event)) return null;
  const link = target.closest('a[href]')?.href ?? '';
  const secret = target.type === 'password';
  return {x: x + left, y: y + bottom, link, editable, selected: selected && !secret};
})())";

/// Not another link that has got the focus since.
constexpr const char* clickLink = R"(
const link = findFocus().target.closest('a[href]');
if (link?.href === address) link.click();
)";

struct Focus {
    int x = 0;
    int y = 0;
    std::string link;
    bool editable = false;
    bool selected = false;
};

gobject::GObjectPointer<JSCValue> member(JSCValue* object, const char* name) {
    return gobject::GObjectPointer<JSCValue>::adopt(jsc_value_object_get_property(object, name));
}

// Scripts count in pixels of the page, which zoom makes larger.
int inView(JSCValue* length, double zoom) {
    return static_cast<int>(std::lround(jsc_value_to_double(length) * zoom));
}

Focus focusOf(JSCValue* value, double zoom) {
    const gobject::GText link(jsc_value_to_string(member(value, "link").get()));
    return {inView(member(value, "x").get(), zoom), inView(member(value, "y").get(), zoom),
            link.get(), jsc_value_to_boolean(member(value, "editable").get()) == TRUE,
            jsc_value_to_boolean(member(value, "selected").get()) == TRUE};
}

/// The name of the action is that of the engine's editing command.
struct Item {
    const char* label;
    const char* command;
    bool isShown;
};

void execute(GSimpleAction* action, GVariant*, gpointer view) {
    webkit_web_view_execute_editing_command(WEBKIT_WEB_VIEW(view),
                                            g_action_get_name(G_ACTION(action)));
}

const char* linkOf(GSimpleAction* action) {
    return static_cast<const char*>(g_object_get_data(G_OBJECT(action), "kelo-link"));
}

void openLink(GSimpleAction* action, GVariant*, gpointer view) {
    const gobject::GVariantPointer arguments(
        g_variant_ref_sink(g_variant_new_parsed("{'address': <%s>}", linkOf(action))));
    const std::string script = std::string(findFocus) + clickLink;
    webkit_web_view_call_async_javascript_function(WEBKIT_WEB_VIEW(view), script.c_str(), -1,
                                                   arguments.get(), world, nullptr, nullptr,
                                                   nullptr, nullptr);
}

void copyLink(GSimpleAction* action, GVariant*, gpointer view) {
    gdk_clipboard_set_text(gtk_widget_get_clipboard(GTK_WIDGET(view)), linkOf(action));
}

class MenuBuilder {
public:
    explicit MenuBuilder(WebKitWebView* view)
        : view(view),
          menu(gobject::GObjectPointer<GMenu>::adopt(g_menu_new())),
          actions(gobject::GObjectPointer<GSimpleActionGroup>::adopt(g_simple_action_group_new())) {
    }

    /// label: of untranslated().
    GSimpleAction* add(const char* label, const char* name, GCallback handler) {
        const auto action =
            gobject::GObjectPointer<GSimpleAction>::adopt(g_simple_action_new(name, nullptr));
        g_signal_connect_object(action.get(), "activate", handler, view,
                                static_cast<GConnectFlags>(0));
        g_action_map_add_action(G_ACTION_MAP(actions.get()), G_ACTION(action.get()));
        g_menu_append(menu.get(), translated(label).c_str(), (std::string("page.") + name).c_str());
        return action.get();
    }

    void popUp(int x, int y) const {
        GtkWidget* const popover = gtk_popover_menu_new_from_model(G_MENU_MODEL(menu.get()));
        gtk_widget_insert_action_group(popover, "page", G_ACTION_GROUP(actions.get()));
        gtk_widget_set_parent(popover, GTK_WIDGET(view));
        const GdkRectangle place{x, y, 1, 1};
        gtk_popover_set_pointing_to(GTK_POPOVER(popover), &place);
        gtk_popover_set_has_arrow(GTK_POPOVER(popover), FALSE);
        gtk_popover_set_position(GTK_POPOVER(popover), GTK_POS_BOTTOM);
        gtk_widget_set_halign(popover, GTK_ALIGN_START);
        g_signal_connect_object(view, "destroy", G_CALLBACK(gtk_widget_unparent), popover,
                                G_CONNECT_SWAPPED);
        g_signal_connect(popover, "closed", G_CALLBACK(closed), nullptr);
        gtk_popover_popup(GTK_POPOVER(popover));
    }

private:
    // The chosen item is activated only after this, so the menu goes in a later turn.
    static void closed(GtkWidget* popover, gpointer) {
        gtk_widget_grab_focus(gtk_widget_get_parent(popover));
        const GSourceFunc remove = [](gpointer data) -> gboolean {
            if (gtk_widget_get_parent(GTK_WIDGET(data)))
                gtk_widget_unparent(GTK_WIDGET(data));
            return G_SOURCE_REMOVE;
        };
        g_idle_add_full(G_PRIORITY_DEFAULT_IDLE, remove, g_object_ref(popover), g_object_unref);
    }

    WebKitWebView* view;
    gobject::GObjectPointer<GMenu> menu;
    gobject::GObjectPointer<GSimpleActionGroup> actions;
};

void showMenuFor(WebKitWebView* view, const Focus& focus) {
    MenuBuilder menu(view);
    if (!focus.link.empty()) {
        for (GSimpleAction* const action :
             {menu.add(untranslated("_Open Link"), "open-link", G_CALLBACK(openLink)),
              menu.add(untranslated("Copy Link _Address"), "copy-link", G_CALLBACK(copyLink))})
            g_object_set_data_full(G_OBJECT(action), "kelo-link", g_strdup(focus.link.c_str()),
                                   g_free);
    }
    const Item items[] = {
        {untranslated("Cu_t"), WEBKIT_EDITING_COMMAND_CUT, focus.editable && focus.selected},
        {untranslated("_Copy"), WEBKIT_EDITING_COMMAND_COPY, focus.selected},
        {untranslated("_Paste"), WEBKIT_EDITING_COMMAND_PASTE, focus.editable},
        {untranslated("Select _All"), WEBKIT_EDITING_COMMAND_SELECT_ALL, true},
    };
    for (const Item& item : items)
        if (item.isShown)
            menu.add(item.label, item.command, G_CALLBACK(execute));
    menu.popUp(focus.x, focus.y);
}

Task<void> askAndShow(gobject::GObjectPointer<WebKitWebView> view) {
    const std::string script = std::string(findFocus) + describeFocus;
    const auto start = [&](GAsyncReadyCallback ready, gpointer data) {
        webkit_web_view_evaluate_javascript(view.get(), script.c_str(), -1, world, nullptr, nullptr,
                                            ready, data);
    };
    const auto result = co_await gobject::asyncResult(start);
    const auto answer = gobject::GObjectPointer<JSCValue>::adopt(
        webkit_web_view_evaluate_javascript_finish(view.get(), result.get(), nullptr));
    if (answer && jsc_value_is_object(answer.get()) &&
        gtk_widget_get_mapped(GTK_WIDGET(view.get())))
        showMenuFor(view.get(), focusOf(answer.get(), webkit_web_view_get_zoom_level(view.get())));
}

} // namespace

void showKeyboardMenu(WebKitWebView* view) {
    spawn(askAndShow(gobject::GObjectPointer<WebKitWebView>::share(view)));
}

} // namespace kelo::webkit
