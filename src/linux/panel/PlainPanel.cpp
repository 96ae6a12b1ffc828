#include "linux/panel/PlainPanel.h"

#include "linux/window/WindowIdentity.h"

#include <gdk/wayland/gdkwayland.h>

#include <utility>

namespace kelo::panel {

namespace {

// Compositors that draw titles and borders leave them away only where a window says that it draws
// its own. The toolkit says so for no window but one with a title bar, which need not be shown.
void declineDecoration(GtkWindow* window) {
    if (!GDK_IS_WAYLAND_DISPLAY(gtk_widget_get_display(GTK_WIDGET(window))))
        return;
    GtkWidget* const neverShown = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    gtk_widget_set_visible(neverShown, FALSE);
    gtk_window_set_titlebar(window, neverShown);
}

} // namespace

std::shared_ptr<PlainPanel> PlainPanel::make(const platform::PanelDescription& description) {
    auto panel = std::make_shared<PlainPanel>(description);
    gtk_widget_add_css_class(panel->window.widget(), "kelo-plain");
    declineDecoration(panel->window.gtkWindow());
    window::setWindowIdentity(panel->window.gtkWindow(), panel);
    return panel;
}

PlainPanel::PlainPanel(const platform::PanelDescription& description, int margin)
    : window(description, margin, [this] { orderOut(); }),
      origin{description.contentRectangle.x, description.contentRectangle.y} {}

void PlainPanel::setContentView(platform::PanelContent content) {
    window.setContent(std::move(content));
}

void PlainPanel::setCloseHandler(std::function<void()> handler) {
    window.setCloseHandler(std::move(handler));
}

bool PlainPanel::isVisible() const {
    return gtk_widget_get_mapped(window.widget());
}

platform::Rectangle PlainPanel::frame() const {
    return {origin.x, origin.y, window.size().width, window.size().height};
}

void PlainPanel::makeKeyAndOrderFront() {
    gtk_window_present(window.gtkWindow());
}

void PlainPanel::makeFirstResponder(const std::shared_ptr<platform::EmbeddedWebView>& view) {
    window.focusView(view);
}

void PlainPanel::orderOut() {
    gtk_widget_set_visible(window.widget(), FALSE);
}

} // namespace kelo::panel
