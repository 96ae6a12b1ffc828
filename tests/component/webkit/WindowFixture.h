#pragma once

#include "component/webkit/WebKitFixture.h"

namespace kelo::test {

/// Views in a window that comes and goes.
class WindowFixture : public WebKitFixture {
protected:
    WindowFixture() : window(gtk_window_new()) {
        gtk_window_set_default_size(GTK_WINDOW(window), 400, 300);
    }
    ~WindowFixture() override { gtk_window_destroy(GTK_WINDOW(window)); }

    /// Waits until the window is drawn.
    void showInWindow() {
        gtk_window_set_child(GTK_WINDOW(window), GTK_WIDGET(native()));
        gtk_window_present(GTK_WINDOW(window));
        ASSERT_TRUE(loop.runUntil([this] { return gtk_widget_get_mapped(GTK_WIDGET(native())); }));
    }
    /// What a main window does with its view when it is closed.
    void leaveWindow() { gtk_window_set_child(GTK_WINDOW(window), nullptr); }

    GtkWidget* const window;
};

} // namespace kelo::test
