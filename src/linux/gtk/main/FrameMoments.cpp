#include "linux/gtk/main/FrameMoments.h"

#include "posix/Moments.h"

#include <gtk/gtk.h>

namespace kelo::gtk {

namespace {

void marked(GdkFrameClock*, gpointer moment) {
    posix::mark(static_cast<posix::Moment>(GPOINTER_TO_INT(moment)));
}

void connect(GdkFrameClock* clock, const char* phase, posix::Moment moment) {
    g_signal_connect(clock, phase, G_CALLBACK(&marked), GINT_TO_POINTER(static_cast<int>(moment)));
}

} // namespace

void markFrames(Gtk::Window& window) {
    if (!posix::momentsAreFollowed())
        return;
    window.signal_realize().connect([&window] {
        // The clock is the window's own and ends with it.
        GdkFrameClock* const clock = gtk_widget_get_frame_clock(GTK_WIDGET(window.gobj()));
        connect(clock, "before-paint", posix::Moment::frameBegan);
        connect(clock, "after-paint", posix::Moment::frameEnded);
    });
}

} // namespace kelo::gtk
