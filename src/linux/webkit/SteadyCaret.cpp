#include "linux/webkit/SteadyCaret.h"

#include <gtk/gtk.h>

#include <string_view>

namespace kelo::webkit {

namespace {

constexpr const char* blink = "gtk-cursor-blink";
constexpr const char* blinkTime = "gtk-cursor-blink-time";
constexpr const char* blinkTimeout = "gtk-cursor-blink-timeout";

constexpr int longTimeout = 60; // seconds

bool isTextField(GtkWidget* widget) {
    return GTK_IS_TEXT(widget) || GTK_IS_TEXT_VIEW(widget);
}

bool textFieldHasKeyboard() {
    GtkWindow* const active = window::activeToplevel();
    GtkWidget* const focus = active ? gtk_window_get_focus(active) : nullptr;
    return focus && isTextField(focus);
}

} // namespace

/// What the settings are, and what they should be.
class SteadyCaret::Hold {
public:
    static void watch(GtkWindow* window, const std::shared_ptr<Hold>& self) {
        const auto changed =
            +[](GtkWindow*, GParamSpec*, std::shared_ptr<Hold>* hold) { (*hold)->decide(); };
        gobject::connectWithState(window, "notify::is-active", changed, self);
        gobject::connectWithState(window, "notify::focus-widget", changed, self);
    }

    std::vector<gobject::SignalConnection> watchSettings() {
        std::vector<gobject::SignalConnection> connections;
        connections.push_back(gobject::connectSignal(
            settings.get(), "notify::gtk-cursor-blink-timeout",
            +[](GtkSettings*, GParamSpec*, Hold* hold) { hold->decide(); }, this));
        // The settings tell of no change below a value of ours.
        connections.push_back(gobject::connectSignal(
            gdk_display_get_default(), "setting-changed",
            +[](GdkDisplay*, const char* name, Hold* hold) { hold->userChanged(name); }, this));
        return connections;
    }

    void decide() {
        if (ended)
            return;
        if (textFieldHasKeyboard() || blinksForLong())
            release();
        else
            take();
    }

    void end() {
        ended = true;
        release();
    }

private:
    void userChanged(std::string_view name) {
        if (name != blink && name != blinkTime)
            return;
        release();
        decide();
    }

    bool blinksForLong() {
        if (!taken)
            g_object_get(settings.get(), blink, &userBlinks, nullptr);
        int timeout = 0;
        g_object_get(settings.get(), blinkTimeout, &timeout, nullptr);
        return userBlinks && timeout > longTimeout;
    }

    // A caret is shown when it gets the keyboard and when it moves, and goes when it blinks for the
    // first time: never, if that is weeks ahead. To turn blinking off is no way to stop it.
    // WebKitGTK 2.50 then draws as often as it can while a caret is shown, and one that is not
    // shown remains so. To be removed when it follows gtk-cursor-blink-timeout. The change that
    // brought this: https://bugs.webkit.org/show_bug.cgi?id=252687
    void take() {
        if (taken)
            return;
        taken = true;
        g_object_set(settings.get(), blinkTime, G_MAXINT, blink, TRUE, nullptr);
    }

    void release() {
        if (!taken)
            return;
        taken = false;
        gtk_settings_reset_property(settings.get(), blink);
        gtk_settings_reset_property(settings.get(), blinkTime);
    }

    const gobject::GObjectPointer<GtkSettings> settings =
        gobject::GObjectPointer<GtkSettings>::share(gtk_settings_get_default());
    gboolean userBlinks = TRUE;
    bool taken = false;
    bool ended = false;
};

SteadyCaret::SteadyCaret()
    : hold(std::make_shared<Hold>()),
      connections(hold->watchSettings()),
      toplevels([hold = hold](GtkWindow* window) { Hold::watch(window, hold); }) {
    hold->decide();
}

SteadyCaret::~SteadyCaret() {
    hold->end();
}

} // namespace kelo::webkit
