#include "linux/gtk/main/ContentArea.h"

#include "linux/gtk/kit/Accessibility.h"
#include "linux/window/HostedPage.h"
#include "linux/window/PageControls.h"

#include <gtkmm/shortcutcontroller.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace kelo::gtk {

namespace {

int points(double length) {
    return static_cast<int>(std::lround(length));
}

} // namespace

ContentArea::ContentArea(platform::Size defaultSize)
    : Glib::ObjectBase("KeloContentArea"), defaultSize(defaultSize) {
    setAccessibleRole(*this, GTK_ACCESSIBLE_ROLE_GROUP);
    add_css_class("kelo-content");
    set_hexpand();
    set_vexpand();
    panel.set_visible(false);
    panel.insert_at_start(*this);
    offerBarsByKey();
}

ContentArea::~ContentArea() {
    releaseWebView();
    panel.unparent();
}

void ContentArea::offerBarsByKey() {
    const auto shortcuts = Gtk::ShortcutController::create();
    // Before the page sees the key.
    shortcuts->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    shortcuts->add_shortcut(Gtk::Shortcut::create(
        Gtk::KeyvalTrigger::create(GDK_KEY_F6),
        Gtk::CallbackAction::create(
            [this](Gtk::Widget&, const Glib::VariantBase&) { return bars.switchFocus(); })));
    add_controller(shortcuts);
}

void ContentArea::draw(const platform::WebContentDescription& description) {
    takeWebView(description.webView);
    overlay = description.overlay;
    drawOverlay();
}

void ContentArea::close() {
    const auto kept = webView;
    auto* const page = hosted;
    // In this order, because the engine must not load for a window that is about to go.
    releaseWebView();
    if (page && page->foreignHost())
        page->returnToService();
}

void ContentArea::takeWebView(const std::shared_ptr<platform::EmbeddedWebView>& next) {
    if (next == webView)
        return;
    releaseWebView();
    auto* part = dynamic_cast<window::HostedPage*>(next.get());
    if (!part)
        return;
    webView = next;
    hosted = part;
    GtkWidget* widget = hosted->widget();
    // Another window may still show it.
    if (gtk_widget_get_parent(widget))
        gtk_widget_unparent(widget);
    gtk_widget_insert_after(widget, Gtk::Widget::gobj(), nullptr); // below the panel
    pageObserver = std::make_shared<const std::function<void()>>([this] {
        bars.draw();
        drawOverlay();
        pageChanged.emit();
    });
    hosted->setPageObserver(pageObserver);
    loadObserver = std::make_shared<const std::function<void()>>([this] {
        bars.drawLoad();
        pageChanged.emit();
    });
    hosted->controls().setLoadObserver(loadObserver);
    // It came while no window showed it, or from a window that is being closed.
    if (hosted->foreignHost())
        hosted->returnToService();
    bars.setPage(hosted);
    pageChanged.emit();
}

void ContentArea::releaseWebView() {
    if (!hosted)
        return;
    GtkWidget* widget = hosted->widget();
    if (gtk_widget_get_parent(widget) == Gtk::Widget::gobj())
        gtk_widget_unparent(widget);
    hosted = nullptr;
    bars.setPage(nullptr);
    pageObserver.reset();
    loadObserver.reset();
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

// Never over a page of another host: the panel would vouch for that page.
void ContentArea::drawOverlay() {
    const bool isShown = overlay && !(hosted && hosted->foreignHost());
    if (isShown) {
        panel.draw(*overlay);
        queue_allocate();
    }
    const bool hadFocus = panel.holdsFocus();
    panel.set_visible(isShown);
    // A panel that goes leaves the keyboard to the page.
    if (hadFocus && !isShown)
        focusWebView();
}

Gtk::SizeRequestMode ContentArea::get_request_mode_vfunc() const {
    return Gtk::SizeRequestMode::CONSTANT_SIZE;
}

void ContentArea::measure_vfunc(Gtk::Orientation orientation, int, int& minimum, int& natural,
                                int& minimumBaseline, int& naturalBaseline) const {
    const bool horizontal = orientation == Gtk::Orientation::HORIZONTAL;
    minimum = 0; // the window asks for more, where there is room
    natural = points(horizontal ? defaultSize.width : defaultSize.height);
    minimumBaseline = -1;
    naturalBaseline = -1;
}

void ContentArea::size_allocate_vfunc(int width, int height, int) {
    int minimum = 0;
    int natural = 0;
    int unused = 0;
    const int top = bars.allocate(width);
    // A window that is being closed may still refer to a web view that another window has taken.
    if (hosted && gtk_widget_get_parent(hosted->widget()) == Gtk::Widget::gobj()) {
        gtk_widget_measure(hosted->widget(), GTK_ORIENTATION_HORIZONTAL, -1, &minimum, &natural,
                           nullptr, nullptr);
        const GtkAllocation rest{0, top, width, height - top};
        gtk_widget_size_allocate(hosted->widget(), &rest, -1);
    }
    if (!panel.get_visible())
        return;
    panel.measure(Gtk::Orientation::HORIZONTAL, -1, minimum, natural, unused, unused);
    const int panelWidth = std::max(minimum, std::min(natural, width));
    panel.measure(Gtk::Orientation::VERTICAL, panelWidth, minimum, natural, unused, unused);
    const int panelTop = std::max(0, height - points(overlay->bottomPadding) - natural);
    panel.size_allocate({(width - panelWidth) / 2, panelTop, panelWidth, natural}, -1);
}

} // namespace kelo::gtk
