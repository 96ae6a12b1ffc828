#pragma once

// What a panel uses of the gtk4-layer-shell library, so that its side of it can be compiled and
// tested where the library is not to be had. Written from the library's documentation; the values
// of the enumerations are its own.

#include <gtk/gtk.h>

enum GtkLayerShellLayer {
    GTK_LAYER_SHELL_LAYER_BACKGROUND,
    GTK_LAYER_SHELL_LAYER_BOTTOM,
    GTK_LAYER_SHELL_LAYER_TOP,
    GTK_LAYER_SHELL_LAYER_OVERLAY,
};
enum GtkLayerShellEdge {
    GTK_LAYER_SHELL_EDGE_LEFT,
    GTK_LAYER_SHELL_EDGE_RIGHT,
    GTK_LAYER_SHELL_EDGE_TOP,
    GTK_LAYER_SHELL_EDGE_BOTTOM,
};
enum GtkLayerShellKeyboardMode {
    GTK_LAYER_SHELL_KEYBOARD_MODE_NONE,
    GTK_LAYER_SHELL_KEYBOARD_MODE_EXCLUSIVE,
    GTK_LAYER_SHELL_KEYBOARD_MODE_ON_DEMAND,
};

extern "C" {
gboolean gtk_layer_is_supported(void);
guint gtk_layer_get_protocol_version(void);
void gtk_layer_init_for_window(GtkWindow* window);
void gtk_layer_set_namespace(GtkWindow* window, const char* name_space);
void gtk_layer_set_layer(GtkWindow* window, GtkLayerShellLayer layer);
void gtk_layer_set_keyboard_mode(GtkWindow* window, GtkLayerShellKeyboardMode mode);
void gtk_layer_set_monitor(GtkWindow* window, GdkMonitor* monitor);
void gtk_layer_set_anchor(GtkWindow* window, GtkLayerShellEdge edge, gboolean anchor_to_edge);
void gtk_layer_set_margin(GtkWindow* window, GtkLayerShellEdge edge, int margin_size);
}
