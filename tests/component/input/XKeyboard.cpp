#include "component/input/XKeyboard.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

#include <bitset>
#include <cstdlib>
#include <stdexcept>

namespace kelo::tests {

namespace {

void tellManager(Display* connection, Window window, const char* what, long first) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(connection, what, False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = first;
    XSendEvent(connection, DefaultRootWindow(connection), False,
               SubstructureRedirectMask | SubstructureNotifyMask, &event);
    XSync(connection, False);
}

} // namespace

void XKeyboard::Close::operator()(_XDisplay* display) const {
    XCloseDisplay(display);
}

XKeyboard::XKeyboard() : display(XOpenDisplay(nullptr)) {
    if (!display)
        throw std::runtime_error("no display");
}

XKeyboard::~XKeyboard() {
    char held[32];
    XQueryKeymap(display.get(), held);
    for (unsigned code = 8; code < 256; ++code)
        if (std::bitset<8>(static_cast<unsigned char>(held[code / 8])).test(code % 8))
            key(code, false);
    XkbLockModifiers(display.get(), XkbUseCoreKbd, 0xFF, 0);
    XkbLatchModifiers(display.get(), XkbUseCoreKbd, 0xFF, 0);
    XSync(display.get(), False);
}

unsigned XKeyboard::codeOf(unsigned symbol) {
    const KeyCode code = XKeysymToKeycode(display.get(), symbol);
    if (code == 0)
        throw std::runtime_error("the keyboard has no such key");
    return code;
}

void XKeyboard::key(unsigned code, bool down) {
    XTestFakeKeyEvent(display.get(), code, down, CurrentTime);
    XSync(display.get(), False);
}

void XKeyboard::tap(unsigned symbol) {
    down(symbol);
    up(symbol);
}

void XKeyboard::setStickyKeys(bool on) {
    constexpr unsigned controls = XkbStickyKeysMask | XkbAccessXKeysMask;
    XkbChangeEnabledControls(display.get(), XkbUseCoreKbd, controls, on ? controls : 0);
    XSync(display.get(), False);
}

void XKeyboard::moveTo(int x, int y) {
    XTestFakeMotionEvent(display.get(), -1, x, y, CurrentTime);
    XSync(display.get(), False);
}

std::pair<int, int> XKeyboard::centreOf(unsigned long window) {
    XWindowAttributes attributes{};
    XGetWindowAttributes(display.get(), window, &attributes);
    int x = 0;
    int y = 0;
    Window child = None;
    XTranslateCoordinates(display.get(), window, attributes.root, attributes.width / 2,
                          attributes.height / 2, &x, &y, &child);
    return {x, y};
}

void XKeyboard::click(unsigned button) {
    XTestFakeButtonEvent(display.get(), button, True, CurrentTime);
    XTestFakeButtonEvent(display.get(), button, False, CurrentTime);
    XSync(display.get(), False);
}

void XKeyboard::grab() {
    const int answer = XGrabKeyboard(display.get(), DefaultRootWindow(display.get()), False,
                                     GrabModeAsync, GrabModeAsync, CurrentTime);
    if (answer != GrabSuccess)
        throw std::runtime_error("the keyboard cannot be grabbed");
}

void XKeyboard::ungrab() {
    XUngrabKeyboard(display.get(), CurrentTime);
    XSync(display.get(), False);
}

void XKeyboard::lockGroup(int group) {
    XkbLockGroup(display.get(), XkbUseCoreKbd, static_cast<unsigned>(group));
    XSync(display.get(), False);
}

void XKeyboard::focusOther() {
    if (!other) {
        Display* const connection = display.get();
        other = XCreateSimpleWindow(connection, DefaultRootWindow(connection), 700, 500, 200, 200,
                                    0, 0, 0xFFFFFF);
        XStoreName(connection, other, "another program");
        XSelectInput(connection, other, KeyPressMask | StructureNotifyMask);
        XMapWindow(connection, other);
        XEvent event;
        do
            XWindowEvent(connection, other, StructureNotifyMask, &event);
        while (event.type != MapNotify);
    }
    focus(other);
}

void XKeyboard::focus(unsigned long window) {
    if (!hasManager())
        return forceFocus(window);
    // Two: asked for by the user, which no manager refuses.
    tellManager(display.get(), window, "_NET_ACTIVE_WINDOW", 2);
    settleManager();
}

bool XKeyboard::hasManager() {
    return std::getenv("KELO_WINDOW_MANAGER") != nullptr;
}

void XKeyboard::settleManager() {
    if (!hasManager())
        return;
    // Managers take what comes to them in order, and answer this question by a property.
    Display* const connection = display.get();
    const Window asking =
        XCreateSimpleWindow(connection, DefaultRootWindow(connection), 0, 0, 1, 1, 0, 0, 0);
    XSelectInput(connection, asking, PropertyChangeMask);
    tellManager(connection, asking, "_NET_REQUEST_FRAME_EXTENTS", 0);
    XEvent event;
    XWindowEvent(connection, asking, PropertyChangeMask, &event);
    XDestroyWindow(connection, asking);
    XSync(connection, False);
}

void XKeyboard::forceFocus(unsigned long window) {
    settleManager();
    XSetInputFocus(display.get(), window, RevertToParent, CurrentTime);
    XSync(display.get(), False);
    settleManager();
}

void XKeyboard::focusNothing() {
    XSetInputFocus(display.get(), None, RevertToNone, CurrentTime);
    XSync(display.get(), False);
}

unsigned long XKeyboard::focused() {
    Window window = None;
    int revertTo = 0;
    XGetInputFocus(display.get(), &window, &revertTo);
    return window;
}

int XKeyboard::pressesInOther() {
    XSync(display.get(), False);
    XEvent event;
    while (XCheckTypedWindowEvent(display.get(), other, KeyPress, &event))
        ++presses;
    return presses;
}

bool run(const std::string& command) {
    return std::system(command.c_str()) == 0;
}

} // namespace kelo::tests
