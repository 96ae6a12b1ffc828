#include "linux/input/KeyDownFilter.h"

#include "linux/gobject/SignalHandler.h"
#include "linux/input/OwnWindowsModifierSource.h"
#include "linux/window/WindowIdentity.h"

#include <gtk/gtk.h>

#include <set>
#include <utility>

namespace kelo::input {

class KeyDownFilter::Keys {
public:
    Keys(Handler handler, std::function<void()> otherPress)
        : handler(std::move(handler)), otherPress(std::move(otherPress)) {}

    static void watch(GtkWindow* window, const std::shared_ptr<Keys>& keys) {
        // A key controller would ask the input method first.
        GtkEventController* const controller = gtk_event_controller_legacy_new();
        gtk_event_controller_set_name(controller, "kelo keys");
        gtk_event_controller_set_propagation_phase(controller, GTK_PHASE_CAPTURE);
        gobject::connectWithState(controller, "event", arrived, keys);
        gtk_widget_add_controller(GTK_WIDGET(window), controller);
    }

    /// Lets every event pass from now on.
    void stop() {
        handler = nullptr;
        otherPress = nullptr;
    }

private:
    static gboolean arrived(GtkEventController* controller, GdkEvent* event,
                            std::shared_ptr<Keys>* keys) {
        // Kept, because the handler may close the window and with it the last reference.
        const std::shared_ptr<Keys> self = *keys;
        if (!self->handler)
            return GDK_EVENT_PROPAGATE;
        const GdkEventType type = gdk_event_get_event_type(event);
        if (type == GDK_BUTTON_PRESS)
            self->tellOtherPress();
        if (type != GDK_KEY_PRESS && type != GDK_KEY_RELEASE)
            return GDK_EVENT_PROPAGATE;
        auto* const window = GTK_WINDOW(gtk_event_controller_get_widget(controller));
        return type == GDK_KEY_PRESS ? self->pressed(window, event) : self->released(event);
    }

    void tellOtherPress() {
        // A copy, because the function may destroy the filter.
        if (const auto tell = otherPress)
            tell();
    }

    bool pressed(GtkWindow* window, GdkEvent* event) {
        const guint key = gdk_key_event_get_keycode(event);
        const bool repeats = !held.insert(key).second;
        if (!repeats && !gdk_key_event_is_modifier(event))
            tellOtherPress();
        if (!handler)
            return false;
        platform::Event down;
        down.kind = platform::event_mask::keyDown;
        down.modifierFlags = flagsFromGdk(gdk_event_get_modifier_state(event));
        down.keyCode = gdk_key_event_get_keyval(event) == GDK_KEY_Escape ? platform::key::escape
                                                                         : platform::key::other;
        down.window = window::windowIdentity(window);
        // A copy, because the handler may destroy the filter.
        const bool goesOn =
            Handler(handler)(std::make_shared<const platform::Event>(std::move(down)));
        if (goesOn)
            consumed.erase(key);
        else
            consumed.insert(key);
        return !goesOn;
    }

    bool released(GdkEvent* event) {
        const guint key = gdk_key_event_get_keycode(event);
        held.erase(key);
        return consumed.erase(key) > 0;
    }

    Handler handler;
    std::function<void()> otherPress;
    /// Hardware codes of the keys that are down, as far as our windows have seen.
    std::set<guint> held;
    /// Hardware codes of the keys whose press was consumed and whose release has not come yet.
    std::set<guint> consumed;
};

KeyDownFilter::KeyDownFilter(Handler handler, std::function<void()> otherPress)
    : keys(std::make_shared<Keys>(std::move(handler), std::move(otherPress))),
      toplevels([keys = keys](GtkWindow* window) { Keys::watch(window, keys); }) {}

KeyDownFilter::~KeyDownFilter() {
    keys->stop();
}

} // namespace kelo::input
