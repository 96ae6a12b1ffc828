// Another program on a Wayland desktop: an ordinary window, or a bar along the lower edge.
//   kelo-other-window window|full-screen|bar
// Prints "active" and "not active" when the window gets and loses the keyboard, and "text ..." when
// something has been typed. Ends with its input.
#include <gtk/gtk.h>

#include <cstdio>
#include <gtk4-layer-shell.h>
#include <string>

namespace {

constexpr int barHeight = 40;

void say(const std::string& words) {
    std::puts(words.c_str());
    std::fflush(stdout);
}

void beBar(GtkWindow* window) {
    gtk_layer_init_for_window(window);
    gtk_layer_set_layer(window, GTK_LAYER_SHELL_LAYER_TOP);
    for (const auto edge :
         {GTK_LAYER_SHELL_EDGE_LEFT, GTK_LAYER_SHELL_EDGE_RIGHT, GTK_LAYER_SHELL_EDGE_BOTTOM})
        gtk_layer_set_anchor(window, edge, TRUE);
    gtk_layer_set_exclusive_zone(window, barHeight);
    gtk_widget_set_size_request(GTK_WIDGET(window), 1, barHeight);
    g_signal_connect(window, "map", G_CALLBACK(+[](GtkWindow*, gpointer) { say("mapped"); }),
                     nullptr);
}

void reportState(GtkWindow* window) {
    const auto changed = +[](GtkWindow* changed, GParamSpec*, gpointer) {
        say(gtk_window_is_active(changed) ? "active" : "not active");
    };
    g_signal_connect(window, "notify::is-active", reinterpret_cast<GCallback>(changed), nullptr);
}

GtkWidget* makeEntry() {
    GtkWidget* const entry = gtk_entry_new();
    const auto typed = +[](GtkEditable* editable, gpointer) {
        say(std::string("text ") + gtk_editable_get_text(editable));
    };
    g_signal_connect(entry, "changed", reinterpret_cast<GCallback>(typed), nullptr);
    gtk_widget_set_valign(entry, GTK_ALIGN_START);
    return entry;
}

gboolean inputEnded(GIOChannel*, GIOCondition, gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

} // namespace

int main(int count, char** words) {
    const std::string kind = count == 2 ? words[1] : "";
    gtk_init();
    GtkWindow* const window = GTK_WINDOW(gtk_window_new());
    gtk_window_set_default_size(window, 500, 300);
    gtk_window_set_title(window, "Another program");
    if (kind == "bar") {
        beBar(window);
    } else {
        reportState(window);
        gtk_window_set_child(window, makeEntry());
    }
    if (kind == "full-screen")
        gtk_window_fullscreen(window);
    gtk_window_present(window);
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    g_io_add_watch(g_io_channel_unix_new(0), static_cast<GIOCondition>(G_IO_HUP | G_IO_IN),
                   inputEnded, loop);
    g_main_loop_run(loop);
}
