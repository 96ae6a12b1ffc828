#include "component/panel/FakeContent.h"

namespace kelo::test {

namespace {

using Widget = desktop::GObjectPointer<GtkWidget>;

void addStyle(GtkWidget* widget, GtkCssProvider* style) {
    gtk_style_context_add_provider(gtk_widget_get_style_context(widget), GTK_STYLE_PROVIDER(style),
                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

// A web view that gets the focus passes it on to the field of its page. A box would refuse it.
GtkWidget* makeArea() {
    const GClassInitFunc passFocusOn = [](gpointer type, gpointer) {
        GTK_WIDGET_CLASS(type)->grab_focus = [](GtkWidget* area) -> gboolean {
            return gtk_widget_grab_focus(gtk_widget_get_first_child(area));
        };
    };
    static const GType type =
        g_type_register_static_simple(GTK_TYPE_BOX, "KeloFakeContent", sizeof(GtkBoxClass),
                                      passFocusOn, sizeof(GtkBox), nullptr, GTypeFlags());
    return GTK_WIDGET(g_object_new(type, "orientation", GTK_ORIENTATION_VERTICAL, nullptr));
}

} // namespace

FakeContent::FakeContent()
    : area(Widget::share(makeArea())),
      entry(Widget::share(gtk_entry_new())),
      style(desktop::GObjectPointer<GtkCssProvider>::adopt(gtk_css_provider_new())) {
    gtk_css_provider_load_from_data(style.get(), "box { background: #3366cc; }", -1);
    addStyle(area.get(), style.get());
    gtk_widget_set_focusable(area.get(), FALSE);
    gtk_widget_set_halign(entry.get(), GTK_ALIGN_CENTER);
    gtk_widget_set_valign(entry.get(), GTK_ALIGN_CENTER);
    gtk_widget_set_vexpand(entry.get(), TRUE);
    gtk_box_append(GTK_BOX(area.get()), entry.get());
}

FakeContent::~FakeContent() {
    if (menu)
        gtk_widget_unparent(menu);
}

std::string FakeContent::typed() const {
    return gtk_editable_get_text(GTK_EDITABLE(entry.get()));
}

void FakeContent::clear() {
    gtk_editable_set_text(GTK_EDITABLE(entry.get()), "");
}

bool FakeContent::hasCaret() const {
    const GtkRoot* const root = gtk_widget_get_root(entry.get());
    GtkWidget* const text = gtk_widget_get_first_child(entry.get());
    return root && gtk_window_is_active(GTK_WINDOW(root)) && gtk_widget_has_focus(text);
}

void FakeContent::openMenu() {
    menu = gtk_popover_new();
    GtkWidget* const choice = gtk_button_new_with_label("A choice");
    gtk_widget_set_size_request(choice, 200, 100);
    g_signal_connect_swapped(
        choice, "clicked", reinterpret_cast<GCallback>(+[](FakeContent* self) { ++self->choices; }),
        this);
    gtk_popover_set_child(GTK_POPOVER(menu), choice);
    gtk_widget_set_parent(menu, area.get());
    const GdkRectangle at{320, 100, 1, 1};
    gtk_popover_set_pointing_to(GTK_POPOVER(menu), &at);
    gtk_popover_popup(GTK_POPOVER(menu));
}

void FakeContent::closeMenu() {
    gtk_popover_popdown(GTK_POPOVER(menu));
    gtk_widget_grab_focus(entry.get());
}

platform::Point FakeContent::menuMiddle() const {
    GtkWidget* const child = gtk_popover_get_child(GTK_POPOVER(menu));
    GdkSurface* const surface = gtk_native_get_surface(GTK_NATIVE(menu));
    double ownX = 0;
    double ownY = 0;
    gtk_native_get_surface_transform(GTK_NATIVE(menu), &ownX, &ownY);
    double x = gtk_widget_get_width(child) / 2.0;
    double y = gtk_widget_get_height(child) / 2.0;
    gtk_widget_translate_coordinates(child, menu, x, y, &x, &y);
    double inWindowX = 0;
    double inWindowY = 0;
    GtkWidget* const window = GTK_WIDGET(gtk_widget_get_root(area.get()));
    gtk_widget_translate_coordinates(area.get(), window, 0, 0, &inWindowX, &inWindowY);
    return {gdk_popup_get_position_x(GDK_POPUP(surface)) + ownX + x - inWindowX,
            gdk_popup_get_position_y(GDK_POPUP(surface)) + ownY + y - inWindowY};
}

bool FakeContent::menuIsOpen() const {
    return menu && gtk_widget_get_mapped(menu);
}

} // namespace kelo::test
