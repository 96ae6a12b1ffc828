#include "linux/panel/X11Panel.h"

#include "linux/panel/RoundedShape.h"
#include "linux/window/WindowIdentity.h"

#include <X11/Xatom.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/Xrandr.h>

#include <array>
#include <utility>

namespace kelo::panel {

namespace {

/// The room for the shadow on each side, in points.
constexpr int shadowMargin = 32;
/// How often the panel takes the keyboard back from nobody while it is shown.
constexpr int mostRetakes = 3;
/// How often the panel takes the keyboard back from a window that got it after a dialog of ours.
constexpr int mostReclaims = 2;

} // namespace

std::shared_ptr<X11Panel> X11Panel::make(GdkDisplay* display,
                                         const platform::PanelDescription& description) {
    auto panel = std::make_shared<X11Panel>(display, description);
    window::setWindowIdentity(panel->window.gtkWindow(), panel);
    return panel;
}

X11Panel::X11Panel(GdkDisplay* display, const platform::PanelDescription& description)
    : connection(display),
      window(description, description.hasShadow ? shadowMargin : 0),
      selectionEvent(connection.selectionEvent()),
      mayHaveKeyboard(description.canBecomeKeyWindow),
      randrEvents(connection.randrEvents()),
      heldKey(connection),
      origin{description.contentRectangle.x, description.contentRectangle.y},
      dialogs([this](GtkWindow* appeared) { dialogsChanged(appeared); }) {
    listen();
}

X11Panel::~X11Panel() {
    orderOut();
    if (screensSource != 0)
        g_source_remove(screensSource);
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
    gdk_x11_surface_set_frame_sync_enabled(window.surface(), FALSE);
    // Keeps a compositor from adding a shadow of its own.
    const auto margin = static_cast<unsigned long>(window.margin() * scale());
    const std::array extents{margin, margin, margin, margin};
    XChangeProperty(connection.xlib(), xid(), connection.atom("_GTK_FRAME_EXTENTS"), XA_CARDINAL,
                    32, PropModeReplace, reinterpret_cast<const unsigned char*>(extents.data()),
                    static_cast<int>(extents.size()));
    keyboard.emplace(connection, xid());
    connection.followRootProperties();
    reshape();
}

void X11Panel::listen() {
    g_signal_connect(connection.display(), "xevent",
                     reinterpret_cast<GCallback>(
                         +[](GdkDisplay*, const XEvent* event, X11Panel* self) -> gboolean {
                             return self->handle(*event);
                         }),
                     this);
    const auto reshape = +[](X11Panel* self) { self->reshape(); };
    g_signal_connect_swapped(window.widget(), "notify::scale-factor",
                             reinterpret_cast<GCallback>(reshape), this);
    GtkGesture* const click = gtk_gesture_click_new();
    gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(click), 0);
    gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(click), GTK_PHASE_CAPTURE);
    g_signal_connect_swapped(
        click, "pressed",
        reinterpret_cast<GCallback>(+[](X11Panel* self) { self->takeKeyboard(); }), this);
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
    screensHandler = std::move(handler);
}

bool X11Panel::reportsScreens(const XEvent& event) const {
    if (event.type == PropertyNotify)
        return event.xproperty.window == connection.root() &&
               event.xproperty.atom == connection.atom("_NET_WORKAREA");
    return randrEvents != 0 && (event.type == randrEvents + RRScreenChangeNotify ||
                                event.type == randrEvents + RRNotify);
}

// Later, because one change comes as several events.
void X11Panel::screensChanged() {
    if (!isVisible() || !screensHandler || screensSource != 0)
        return;
    screensSource = g_idle_add(
        [](gpointer self) -> gboolean {
            auto& panel = *static_cast<X11Panel*>(self);
            panel.screensSource = 0;
            if (panel.isVisible())
                panel.screensHandler();
            return G_SOURCE_REMOVE;
        },
        this);
}

void X11Panel::makeKeyAndOrderFront() {
    g_debug("panel: shown");
    if (!window.surface())
        realize();
    move();
    gtk_widget_set_visible(window.widget(), TRUE);
    move();
    watchPresses(true);
    stay();
    reclaimsLeft = 0;
    waitsForDialog = dialogs.anyShown();
    if (waitsForDialog) {
        XLowerWindow(connection.xlib(), xid());
    } else {
        XRaiseWindow(connection.xlib(), xid());
        takeKeyboard();
    }
    retakesLeft = mayHaveKeyboard ? mostRetakes : 0;
    XFlush(connection.xlib());
}

void X11Panel::makeFirstResponder(const std::shared_ptr<platform::EmbeddedWebView>& view) {
    window.focusView(view);
}

void X11Panel::orderOut() {
    if (!isVisible())
        return;
    g_debug("panel: hidden");
    watchPresses(false);
    stay();
    waitsForDialog = false;
    const bool hadKeyboard = keyboard->hasKeyboard();
    keyboard->giveBack();
    if (hadKeyboard)
        heldKey.begin();
    gtk_widget_set_visible(window.widget(), FALSE);
    XFlush(connection.xlib());
}

void X11Panel::takeKeyboard() {
    if (mayHaveKeyboard && isVisible())
        keyboard->take();
}

// A window manager that is still busy with a window that has just been closed takes the keyboard
// away for good, although the panel is newer. Limited, so that the two cannot fight without end.
void X11Panel::keyboardLost() {
    if (!isVisible() || dialogs.anyShown())
        return;
    if (reclaimsLeft > 0) {
        --reclaimsLeft;
        keyboard->takeAgain();
    } else if (retakesLeft > 0 && keyboard->retake()) {
        --retakesLeft;
    }
}

// The panel took the keyboard later than the last input that the window manager knows of, so the
// server may ignore what the manager does for the dialog.
void X11Panel::dialogMapped(XID dialog) {
    if (dialog == dialogToFocus && keyboard && keyboard->hasKeyboard())
        keyboard->passTo(std::exchange(dialogToFocus, XID(None)));
}

// Only while the panel is shown, so that nobody's clicks wake the program for nothing.
void X11Panel::watchPresses(bool wanted) const {
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
    if (wanted)
        XISetMask(bits.data(), XI_RawButtonPress);
    XIEventMask mask{XIAllMasterDevices, static_cast<int>(bits.size()), bits.data()};
    XISelectEvents(connection.xlib(), connection.root(), &mask, 1);
}

// Some window managers do not know that the panel has the keyboard. A click into the window that
// they believe has it changes nothing for them. The others go first, because mutter gives the
// keyboard to no window that is clicked if it changes hands at the same moment.
void X11Panel::pressed(Time time) {
    reclaimsLeft = 0;
    if (!isVisible())
        return;
    if (connection.isUnmanagedAndOurs(connection.underPointer()))
        return stay();
    retakesLeft = 0;
    pressTime = time;
    pressedWindow = connection.ordinaryWindowUnderPointer();
    constexpr guint milliseconds = 120;
    if (leaving == 0)
        leaving = g_timeout_add(
            milliseconds,
            [](gpointer self) -> gboolean {
                auto& panel = *static_cast<X11Panel*>(self);
                panel.leaving = 0;
                panel.keyboard->giveBack(panel.pressTime, panel.pressedWindow);
                return G_SOURCE_REMOVE;
            },
            this);
}

void X11Panel::stay() {
    if (leaving != 0)
        g_source_remove(std::exchange(leaving, 0));
}

// The panel lies above all managed windows, so a dialog would open behind it, unseen.
void X11Panel::dialogsChanged(GtkWindow* appeared) {
    dialogToFocus = None;
    if (!isVisible())
        return;
    if (appeared) {
        waitsForDialog = waitsForDialog || keyboard->hasKeyboard();
        dialogToFocus = gdk_x11_surface_get_xid(gtk_native_get_surface(GTK_NATIVE(appeared)));
        XLowerWindow(connection.xlib(), xid());
    } else {
        XRaiseWindow(connection.xlib(), xid());
        // The window manager has yet to learn that the dialog has gone, and then chooses a window.
        reclaimsLeft = waitsForDialog ? mostReclaims : 0;
        if (std::exchange(waitsForDialog, false) && mayHaveKeyboard)
            keyboard->takeAgain();
    }
    XFlush(connection.xlib());
}

// The toolkit relies on the window manager to mark the active window, but this one is not managed.
// Without the mark, no caret blinks and pages run as if they were in the background.
void X11Panel::noteFocus(bool focused) {
    const std::array<Atom, 1> state{connection.atom("_NET_WM_STATE_FOCUSED")};
    XChangeProperty(connection.xlib(), xid(), connection.atom("_NET_WM_STATE"), XA_ATOM, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(state.data()),
                    focused ? 1 : 0);
}

gboolean X11Panel::handle(const XEvent& event) {
    if (event.type == selectionEvent && isTranslucent != connection.isComposited())
        reshape();
    heldKey.handle(event);
    if (reportsScreens(event))
        screensChanged();
    if (event.type == MapNotify && dialogToFocus != None)
        dialogMapped(event.xmap.window);
    if (event.type != GenericEvent || !event.xcookie.data || !window.surface())
        return FALSE;
    if (event.xcookie.evtype == XI_RawButtonPress) {
        const auto& press = *static_cast<const XIRawEvent*>(event.xcookie.data);
        // Buttons 4 to 7 are the wheel.
        if (press.detail < 4 || press.detail > 7)
            pressed(press.time);
        return FALSE;
    }
    if (event.xcookie.evtype != XI_FocusIn && event.xcookie.evtype != XI_FocusOut)
        return FALSE;
    const auto& focus = *static_cast<const XIFocusInEvent*>(event.xcookie.data);
    // An open menu grabs the keyboard without taking the focus.
    const bool ofAGrab = focus.mode == XINotifyGrab || focus.mode == XINotifyUngrab;
    if (focus.event == xid() && !ofAGrab && focus.detail != XINotifyPointer) {
        const bool focused = event.xcookie.evtype == XI_FocusIn;
        noteFocus(focused);
        if (!focused)
            keyboardLost();
    }
    return FALSE;
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
    const int left = wholePoints(origin.x * scale());
    const int top = connection.height() - wholePoints((origin.y + window.size().height) * scale());
    XMoveWindow(connection.xlib(), xid(), left - margin, top - margin);
}

int X11Panel::scale() const {
    return gtk_widget_get_scale_factor(window.widget());
}

} // namespace kelo::panel
