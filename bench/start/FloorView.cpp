// bench-floor-view ADDRESS: the least that a program of this web engine can do: a window with the
// page.

#include <webkit/webkit.h>

int main(int count, char** arguments) {
    if (count != 2)
        return 2;
    GtkApplication* const application =
        gtk_application_new("app.kelo.bench.view", G_APPLICATION_NON_UNIQUE);
    g_signal_connect(
        application, "activate", G_CALLBACK(+[](GtkApplication* app, gpointer address) {
            GtkWidget* const window = gtk_application_window_new(app);
            GtkWidget* const view = webkit_web_view_new();
            webkit_network_session_set_tls_errors_policy(
                webkit_web_view_get_network_session(WEBKIT_WEB_VIEW(view)),
                WEBKIT_TLS_ERRORS_POLICY_IGNORE);
            webkit_web_view_load_uri(WEBKIT_WEB_VIEW(view), static_cast<const char*>(address));
            gtk_window_set_child(GTK_WINDOW(window), view);
            gtk_window_set_default_size(GTK_WINDOW(window), 1100, 760);
            gtk_window_present(GTK_WINDOW(window));
        }),
        arguments[1]);
    const int status = g_application_run(G_APPLICATION(application), 1, arguments);
    g_object_unref(application);
    return status;
}
