// bench-floor-window: the least that a program of this toolkit can do: a window in the page's
// color.

#include <gtk/gtk.h>

int main(int count, char** arguments) {
    GtkApplication* const application =
        gtk_application_new("app.kelo.bench.window", G_APPLICATION_NON_UNIQUE);
    g_signal_connect(
        application, "activate", G_CALLBACK(+[](GtkApplication* app, gpointer) {
            GtkWidget* const window = gtk_application_window_new(app);
            GtkCssProvider* const style = gtk_css_provider_new();
            gtk_css_provider_load_from_data(style, "window { background: #2f5d50; }", -1);
            gtk_style_context_add_provider_for_display(gtk_widget_get_display(window),
                                                       GTK_STYLE_PROVIDER(style),
                                                       GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
            g_object_unref(style);
            gtk_window_set_default_size(GTK_WINDOW(window), 1100, 760);
            gtk_window_present(GTK_WINDOW(window));
        }),
        nullptr);
    const int status = g_application_run(G_APPLICATION(application), count, arguments);
    g_object_unref(application);
    return status;
}
