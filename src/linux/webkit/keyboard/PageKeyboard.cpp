#include "linux/webkit/keyboard/PageKeyboard.h"

#include "linux/gobject/GObjectPointer.h"
#include "linux/webkit/keyboard/KeyboardMenu.h"

#include <deque>
#include <memory>

namespace kelo::webkit {

namespace {

struct EventDeleter {
    void operator()(GdkEvent* event) const { gdk_event_unref(event); }
};
using EventPointer = std::unique_ptr<GdkEvent, EventDeleter>;
using ControllerPointer = gobject::GObjectPointer<GtkEventController>;

// More than fingers press before a busy page answers.
constexpr std::size_t mostOffered = 64;

bool isTab(guint key) {
    return key == GDK_KEY_Tab || key == GDK_KEY_ISO_Left_Tab || key == GDK_KEY_KP_Tab;
}

/// Lives as long as its view, which owns it.
class PageKeyboard {
public:
    explicit PageKeyboard(WebKitWebView* view) : view(view) {
        restrainHiddenTextView();
        gtk_widget_add_controller(GTK_WIDGET(view), makeController(G_CALLBACK(pressed)));
        g_signal_connect(view, "notify::root", G_CALLBACK(rootChanged), this);
    }

private:
    GtkEventController* makeController(GCallback handler) {
        GtkEventController* const controller = gtk_event_controller_key_new();
        // Before the engine sees the key.
        gtk_event_controller_set_propagation_phase(controller, GTK_PHASE_CAPTURE);
        g_signal_connect(controller, "key-pressed", handler, this);
        return controller;
    }

    void restrainHiddenTextView() {
        for (GtkWidget* child = gtk_widget_get_first_child(GTK_WIDGET(view)); child;
             child = gtk_widget_get_next_sibling(child)) {
            if (!GTK_IS_TEXT_VIEW(child))
                continue;
            hiddenTextView = child;
            gtk_widget_set_can_focus(child, FALSE);
            gtk_widget_action_set_enabled(child, "menu.popup", FALSE);
            gtk_widget_action_set_enabled(child, "misc.insert-emoji", FALSE);
        }
    }

    // A key that the page does not take, the engine puts back into the queue, and it comes again.
    static gboolean pressed(GtkEventController* controller, guint key, guint,
                            GdkModifierType modifiers, PageKeyboard* self) {
        GdkEvent* const event = gtk_event_controller_get_current_event(controller);
        const guint held = modifiers & gtk_accelerator_get_default_mod_mask();
        if (self->comesAgain(event))
            return self->declined(key, held);
        self->offeredEvents.emplace_back(gdk_event_ref(event));
        if (self->offeredEvents.size() > mostOffered)
            self->offeredEvents.pop_front();
        return self->offered(key, held);
    }

    bool comesAgain(GdkEvent* event) {
        return std::erase_if(offeredEvents, [event](const EventPointer& offered) {
                   return offered.get() == event;
               }) > 0;
    }

    bool offered(guint key, guint held) {
        if (key == GDK_KEY_F7 && held == 0) {
            WebKitSettings* const settings = webkit_web_view_get_settings(view);
            webkit_settings_set_enable_caret_browsing(
                settings, !webkit_settings_get_enable_caret_browsing(settings));
            return true;
        }
        // The engine hears this signal, makes an editing command of the key that it is about to
        // see, and keeps the hidden text view from opening a chooser of its own.
        if ((key == GDK_KEY_period || key == GDK_KEY_semicolon) && held == GDK_CONTROL_MASK &&
            hiddenTextView)
            g_signal_emit_by_name(hiddenTextView, "insert-emoji");
        return false;
    }

    bool declined(guint key, guint held) {
        const bool asksForMenu =
            (key == GDK_KEY_Menu && held == 0) || (key == GDK_KEY_F10 && held == GDK_SHIFT_MASK);
        if (asksForMenu)
            showKeyboardMenu(view);
        return asksForMenu;
    }

    // At the end of the page, the engine moves the focus itself and still puts the key back. The
    // control that has the focus by then would hand it on to the next one.
    static gboolean pressedInWindow(GtkEventController* controller, guint key, guint,
                                    GdkModifierType, PageKeyboard* self) {
        return isTab(key) && !gtk_widget_is_focus(GTK_WIDGET(self->view)) &&
               self->comesAgain(gtk_event_controller_get_current_event(controller));
    }

    static void rootChanged(GtkWidget* view, GParamSpec*, PageKeyboard* self) {
        if (GtkWidget* const former =
                self->inWindow ? gtk_event_controller_get_widget(self->inWindow.get()) : nullptr)
            gtk_widget_remove_controller(former, self->inWindow.get());
        self->inWindow = {};
        GtkRoot* const root = gtk_widget_get_root(view);
        if (!root)
            return;
        self->inWindow =
            ControllerPointer::share(self->makeController(G_CALLBACK(pressedInWindow)));
        gtk_widget_add_controller(GTK_WIDGET(root),
                                  GTK_EVENT_CONTROLLER(g_object_ref(self->inWindow.get())));
    }

    WebKitWebView* view;
    GtkWidget* hiddenTextView = nullptr;
    ControllerPointer inWindow;
    /// Kept, so that no other event can have their addresses. Those that the page takes never come
    /// again.
    std::deque<EventPointer> offeredEvents;
};

} // namespace

void attachPageKeyboard(WebKitWebView* view) {
    auto keyboard = std::make_unique<PageKeyboard>(view);
    g_object_set_data_full(G_OBJECT(view), "kelo-keyboard", keyboard.release(), [](gpointer data) {
        std::unique_ptr<PageKeyboard>(static_cast<PageKeyboard*>(data));
    });
}

} // namespace kelo::webkit
