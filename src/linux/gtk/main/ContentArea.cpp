#include "linux/gtk/main/ContentArea.h"

#include "linux/window/HostedWidget.h"

#include <algorithm>
#include <cmath>

namespace kelo::gtk {

namespace {

int points(double length) {
    return static_cast<int>(std::lround(length));
}

} // namespace

ContentArea::ContentArea(platform::Size defaultSize)
    : Glib::ObjectBase("KeloContentArea"), defaultSize(defaultSize) {
    add_css_class("kelo-content");
    set_hexpand();
    set_vexpand();
    panel.set_visible(false);
    panel.set_parent(*this);
}

ContentArea::~ContentArea() {
    releaseWebView();
    panel.unparent();
}

void ContentArea::draw(const platform::WebContentDescription& description) {
    takeWebView(description.webView);
    if (minimumSize != description.minimumSize) {
        minimumSize = description.minimumSize;
        queue_resize();
    }
    drawOverlay(description.overlay);
}

void ContentArea::takeWebView(const std::shared_ptr<platform::EmbeddedWebView>& next) {
    if (next == webView)
        return;
    releaseWebView();
    auto* part = dynamic_cast<window::HostedWidget*>(next.get());
    if (!part)
        return;
    webView = next;
    hosted = part;
    GtkWidget* widget = hosted->widget();
    // Another window may still show it.
    if (gtk_widget_get_parent(widget))
        gtk_widget_unparent(widget);
    gtk_widget_insert_after(widget, Gtk::Widget::gobj(), nullptr); // below the panel
}

void ContentArea::releaseWebView() {
    if (!hosted)
        return;
    GtkWidget* widget = hosted->widget();
    if (gtk_widget_get_parent(widget) == Gtk::Widget::gobj())
        gtk_widget_unparent(widget);
    hosted = nullptr;
    webView.reset();
}

void ContentArea::rememberFocus(const Gtk::Widget& focus) {
    panelHadFocusLast = focus.is_ancestor(panel);
}

void ContentArea::takeFocus() {
    if (panelHadFocusLast && panel.get_visible() &&
        panel.child_focus(Gtk::DirectionType::TAB_FORWARD))
        return;
    focusWebView();
}

void ContentArea::focusWebView() {
    if (hosted)
        gtk_widget_grab_focus(hosted->widget());
}

void ContentArea::drawOverlay(const std::optional<platform::OverlayDescription>& description) {
    if (!description) {
        const bool hadFocus = panel.holdsFocus();
        panel.set_visible(false);
        if (hadFocus)
            focusWebView();
        return;
    }
    bottomPadding = description->bottomPadding;
    panel.draw(*description);
    panel.set_visible(true);
    queue_allocate();
}

Gtk::SizeRequestMode ContentArea::get_request_mode_vfunc() const {
    return Gtk::SizeRequestMode::CONSTANT_SIZE;
}

void ContentArea::measure_vfunc(Gtk::Orientation orientation, int, int& minimum, int& natural,
                                int& minimumBaseline, int& naturalBaseline) const {
    const bool horizontal = orientation == Gtk::Orientation::HORIZONTAL;
    minimum = points(horizontal ? minimumSize.width : minimumSize.height);
    natural = std::max(minimum, points(horizontal ? defaultSize.width : defaultSize.height));
    minimumBaseline = -1;
    naturalBaseline = -1;
}

void ContentArea::size_allocate_vfunc(int width, int height, int) {
    int minimum = 0;
    int natural = 0;
    int unused = 0;
    // A window that is being closed may still refer to a web view that another window has taken.
    if (hosted && gtk_widget_get_parent(hosted->widget()) == Gtk::Widget::gobj()) {
        gtk_widget_measure(hosted->widget(), GTK_ORIENTATION_HORIZONTAL, -1, &minimum, &natural,
                           nullptr, nullptr);
        const GtkAllocation whole{0, 0, width, height};
        gtk_widget_size_allocate(hosted->widget(), &whole, -1);
    }
    if (!panel.get_visible())
        return;
    panel.measure(Gtk::Orientation::HORIZONTAL, -1, minimum, natural, unused, unused);
    const int panelWidth = std::max(minimum, std::min(natural, width));
    panel.measure(Gtk::Orientation::VERTICAL, panelWidth, minimum, natural, unused, unused);
    const int top = std::max(0, height - points(bottomPadding) - natural);
    panel.size_allocate({(width - panelWidth) / 2, top, panelWidth, natural}, -1);
}

} // namespace kelo::gtk
