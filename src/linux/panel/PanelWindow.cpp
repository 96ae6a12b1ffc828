#include "linux/panel/PanelWindow.h"

#include "base/Translation.h"
#include "linux/window/HostedWidget.h"
#include "linux/window/Toplevels.h"

#include <cmath>
#include <string>
#include <utility>

namespace kelo::panel {

namespace {

// The provider is added to this window's widgets, not to the display, so that its rules apply to no
// other window.
void addStyle(GtkWidget* widget, GtkCssProvider* style) {
    gtk_style_context_add_provider(gtk_widget_get_style_context(widget), GTK_STYLE_PROVIDER(style),
                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION + 1);
}

GtkWidget* widgetOf(const std::shared_ptr<platform::EmbeddedWebView>& view) {
    auto* const hosted = dynamic_cast<window::HostedWidget*>(view.get());
    return hosted ? hosted->widget() : nullptr;
}

void follow(GtkWidget* widget, platform::AutoresizingMask mask) {
    const bool wide = (mask & platform::autoresizing::widthSizable) != 0;
    const bool high = (mask & platform::autoresizing::heightSizable) != 0;
    gtk_widget_set_hexpand(widget, wide);
    gtk_widget_set_vexpand(widget, high);
    gtk_widget_set_halign(widget, wide ? GTK_ALIGN_FILL : GTK_ALIGN_START);
    gtk_widget_set_valign(widget, high ? GTK_ALIGN_FILL : GTK_ALIGN_END);
}

} // namespace

int wholePoints(double length) {
    return static_cast<int>(std::lround(length));
}

PanelWindow::PanelWindow(const platform::PanelDescription& description, int margin,
                         std::function<void()> hide)
    : size_{description.contentRectangle.width, description.contentRectangle.height},
      margin_(margin),
      isClear(!description.opaque &&
              description.backgroundColor == platform::BackgroundColor::clear),
      hasShadow(description.hasShadow && margin > 0),
      window(gobject::GObjectPointer<GtkWindow>::share(GTK_WINDOW(gtk_window_new()))),
      frame(gobject::GObjectPointer<GtkWidget>::share(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0))),
      style(gobject::GObjectPointer<GtkCssProvider>::adopt(gtk_css_provider_new())),
      hide(std::move(hide)) {
    gtk_window_set_decorated(window.get(), FALSE);
    gtk_window_set_resizable(window.get(), FALSE);
    // Shown nowhere. Screen readers read it aloud.
    gtk_window_set_title(window.get(), translated("Kelo voice assistant").c_str());
    gtk_widget_set_size_request(frame.get(), wholePoints(size_.width), wholePoints(size_.height));
    gtk_widget_set_margin_start(frame.get(), margin);
    gtk_widget_set_margin_end(frame.get(), margin);
    gtk_widget_set_margin_top(frame.get(), margin);
    gtk_widget_set_margin_bottom(frame.get(), margin);
    gtk_widget_set_name(frame.get(), "kelo-panel");
    addStyle(widget(), style.get());
    addStyle(frame.get(), style.get());
    gtk_window_set_child(window.get(), frame.get());
    // Some desktops have a key or a button that closes any window. The panel will be shown again,
    // so it is only hidden.
    const auto closing = +[](GtkWindow*, PanelWindow* self) -> gboolean {
        self->leave();
        return TRUE;
    };
    g_signal_connect(window.get(), "close-request", reinterpret_cast<GCallback>(closing), this);
    if (description.hidesOnDeactivate)
        hideWhenInactive();
    applyStyle();
}

PanelWindow::~PanelWindow() {
    g_signal_handlers_disconnect_by_data(window.get(), this);
    gtk_window_destroy(window.get());
}

void PanelWindow::setContent(platform::PanelContent newContent) {
    if (GtkWidget* const old = gtk_widget_get_first_child(frame.get()))
        gtk_box_remove(GTK_BOX(frame.get()), old);
    content = std::move(newContent);
    gtk_widget_set_overflow(frame.get(),
                            content.masksToBounds ? GTK_OVERFLOW_HIDDEN : GTK_OVERFLOW_VISIBLE);
    applyStyle();
    GtkWidget* const shown = widgetOf(content.webView);
    if (!shown)
        return;
    follow(shown, content.autoresizingMask);
    gtk_box_append(GTK_BOX(frame.get()), shown);
}

void PanelWindow::focusView(const std::shared_ptr<platform::EmbeddedWebView>& view) {
    GtkWidget* const wanted = widgetOf(view);
    if (wanted && gtk_widget_is_ancestor(wanted, widget()))
        gtk_widget_grab_focus(wanted);
}

void PanelWindow::leave() {
    hide();
    if (closed)
        closed();
}

GdkSurface* PanelWindow::surface() const {
    return gtk_native_get_surface(GTK_NATIVE(window.get()));
}

// The keyboard goes from one of our windows to another in two steps. Only when both are done is it
// known whether the program has lost it.
void PanelWindow::hideWhenInactive() {
    const auto changed = +[](GtkWindow* window, GParamSpec*, PanelWindow* self) {
        if (gtk_window_is_active(window) || self->deactivation.isWaiting())
            return;
        self->deactivation.whenIdle([self] {
            if (!window::activeToplevel())
                self->leave();
        });
    };
    g_signal_connect(window.get(), "notify::is-active", reinterpret_cast<GCallback>(changed), this);
}

void PanelWindow::applyStyle() {
    std::string rules;
    if (isClear)
        rules += "window { background: none; box-shadow: none; }\n";
    rules += "#kelo-panel { border-radius: " + std::to_string(wholePoints(content.cornerRadius)) +
             "px; ";
    if (hasShadow) {
        // The offset and the blur together stay within the margin.
        const auto pixels = [](int length) { return std::to_string(length) + "px "; };
        rules += "box-shadow: 0 " + pixels(margin_ / 4) + pixels(margin_ * 11 / 16) +
                 "rgba(0,0,0,0.30), 0 0 1px rgba(0,0,0,0.45); ";
    }
    // Without shadows, nothing would separate the panel from a window of the same colour: the
    // hairline does.
    rules += "outline: 1px solid rgba(127,127,127,0.4); outline-offset: -1px; }\n";
    // Where a window fills a square of the desktop's, a round corner would show what is behind.
    // Layer surfaces are no such windows, although their library has the toolkit take them for
    // maximized.
    for (const std::string state : {"tiled", "tiled-top", "tiled-left", "maximized", "fullscreen"})
        rules += "window.kelo-plain." + state + " #kelo-panel { border-radius: 0; }\n";
    gtk_css_provider_load_from_data(style.get(), rules.c_str(), -1);
}

} // namespace kelo::panel
