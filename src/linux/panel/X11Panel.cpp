#include "linux/panel/X11Panel.h"

#include "linux/panel/RoundedShape.h"
#include "linux/window/WindowIdentity.h"

#include <X11/Xatom.h>

#include <array>
#include <utility>

namespace kelo::panel {

namespace {

/// The room for the shadow on each side, in points.
constexpr int shadowMargin = 32;

} // namespace

std::shared_ptr<X11Panel> X11Panel::make(GdkDisplay* display,
                                         const platform::PanelDescription& description) {
    auto panel = std::make_shared<X11Panel>(display, description);
    window::setWindowIdentity(panel->window.gtkWindow(), panel);
    return panel;
}

X11Panel::X11Panel(GdkDisplay* display, const platform::PanelDescription& description)
    : connection(display),
      window(description, description.hasShadow ? shadowMargin : 0, [this] { orderOut(); }),
      selectionEvent(connection.selectionEvent()),
      mayHaveKeyboard(description.canBecomeKeyWindow),
      screens(connection),
      origin{description.contentRectangle.x, description.contentRectangle.y} {
    listen();
}

X11Panel::~X11Panel() {
    orderOut();
    g_signal_handlers_disconnect_by_data(connection.display(), this);
}

// Called at the first show, not earlier: GDK crashes if a window is destroyed that was realized but
// never shown while one of its frames is still pending.
void X11Panel::realize() {
    gtk_widget_realize(window.widget());
    XSetWindowAttributes attributes{};
    attributes.override_redirect = True;
    XChangeWindowAttributes(connection.xlib(), xid(), CWOverrideRedirect, &attributes);
    // GTK waits for an answer of the compositing window manager before it draws the next frame.
    // Some window managers do not answer for windows that they do not manage.
    window::drawWithoutManager(window.surface());
    // Keeps a compositor from adding a shadow of its own.
    const unsigned long margin = static_cast<unsigned>(window.margin() * scale());
    const std::array extents{margin, margin, margin, margin};
    XChangeProperty(connection.xlib(), xid(), connection.atom("_GTK_FRAME_EXTENTS"), XA_CARDINAL,
                    32, PropModeReplace, reinterpret_cast<const unsigned char*>(extents.data()),
                    static_cast<int>(extents.size()));
    keyboard.emplace(connection, window.gtkWindow(), mayHaveKeyboard, [this](bool aside) {
        isAside = aside;
        move();
    });
    connection.followRootProperties();
    reshape();
}

void X11Panel::listen() {
    g_signal_connect(connection.display(), "xevent",
                     reinterpret_cast<GCallback>(
                         +[](GdkDisplay*, const XEvent* event, X11Panel* self) -> gboolean {
                             self->handle(*event);
                             return FALSE;
                         }),
                     this);
    const auto reshape = +[](X11Panel* self) { self->reshape(); };
    g_signal_connect_swapped(window.widget(), "notify::scale-factor",
                             reinterpret_cast<GCallback>(reshape), this);
    GtkGesture* const click = gtk_gesture_click_new();
    gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(click), 0);
    gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(click), GTK_PHASE_CAPTURE);
    const auto pressed = +[](X11Panel* self) {
        if (self->keyboard)
            self->keyboard->take();
    };
    g_signal_connect_swapped(click, "pressed", reinterpret_cast<GCallback>(pressed), this);
    gtk_widget_add_controller(window.widget(), GTK_EVENT_CONTROLLER(click));
}

void X11Panel::setContentView(platform::PanelContent content) {
    window.setContent(std::move(content));
    reshape();
}

bool X11Panel::isVisible() const {
    return gtk_widget_get_mapped(window.widget());
}

platform::Rectangle X11Panel::frame() const {
    return {origin.x, origin.y, window.size().width, window.size().height};
}

void X11Panel::setFrameOrigin(platform::Point newOrigin) {
    origin = newOrigin;
    if (isVisible())
        move();
}

void X11Panel::setScreensHandler(std::function<void()> handler) {
    screens.setHandler([this, handler = std::move(handler)] {
        if (handler && isVisible())
            handler();
    });
}

void X11Panel::setCloseHandler(std::function<void()> handler) {
    window.setCloseHandler(std::move(handler));
}

void X11Panel::makeKeyAndOrderFront() {
    g_debug("panel: shown");
    if (!window.surface())
        realize();
    else if (!isVisible() && !keyboard->dialogNeedsPlace())
        appear();
    move();
    gtk_widget_set_visible(window.widget(), TRUE);
    move();
    keyboard->panelShown();
    XFlush(connection.xlib());
}

// The toolkit styles and measures the window before it asks the server to show it. From the second
// show on, the window has its size and its properties, and the user need not wait for that.
void X11Panel::appear() {
    isAside = false;
    move();
    XMapRaised(connection.xlib(), xid());
    XFlush(connection.xlib());
}

void X11Panel::makeFirstResponder(const std::shared_ptr<platform::EmbeddedWebView>& view) {
    window.focusView(view);
}

void X11Panel::orderOut() {
    if (!isVisible())
        return;
    g_debug("panel: hidden");
    keyboard->panelLeaves();
    gtk_widget_set_visible(window.widget(), FALSE);
    XFlush(connection.xlib());
}

void X11Panel::handle(const XEvent& event) {
    if (event.type == selectionEvent && isTranslucent != connection.isComposited())
        reshape();
    screens.handle(event);
    if (keyboard)
        keyboard->handle(event);
}

void X11Panel::reshape() {
    if (!window.surface())
        return;
    const RoundedShape rounded(wholePoints(window.size().width), wholePoints(window.size().height),
                               wholePoints(window.cornerRadius()), window.margin());
    isTranslucent = connection.isComposited();
    rounded.apply(connection, xid(), scale(), isTranslucent);
    move();
}

void X11Panel::move() const {
    const int margin = window.margin() * scale();
    const int beyondTheEdge = -wholePoints((window.size().width + window.margin()) * scale());
    const int left = isAside ? beyondTheEdge : wholePoints(origin.x * scale());
    const int top = connection.height() - wholePoints((origin.y + window.size().height) * scale());
    XMoveWindow(connection.xlib(), xid(), left - margin, top - margin);
}

int X11Panel::scale() const {
    return gtk_widget_get_scale_factor(window.widget());
}

} // namespace kelo::panel
