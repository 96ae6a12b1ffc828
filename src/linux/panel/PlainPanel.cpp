#include "linux/panel/PlainPanel.h"

#include "linux/window/WindowIdentity.h"

#include <utility>

namespace kelo::panel {

std::shared_ptr<PlainPanel> PlainPanel::make(const platform::PanelDescription& description) {
    auto panel = std::make_shared<PlainPanel>(description);
    window::setWindowIdentity(panel->window.gtkWindow(), panel);
    return panel;
}

PlainPanel::PlainPanel(const platform::PanelDescription& description, int margin)
    : window(description, margin, [this] { orderOut(); }),
      origin{description.contentRectangle.x, description.contentRectangle.y} {}

void PlainPanel::setContentView(platform::PanelContent content) {
    window.setContent(std::move(content));
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
