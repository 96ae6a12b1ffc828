#include "testing/screen/OtherProgram.h"

#include "testing/screen/Windows.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <array>
#include <stdexcept>

namespace kelo::screen {

OtherProgram::OtherProgram(Place place, Kind kind) : where(place) {
    Display* const x = own.display();
    identifier = XCreateSimpleWindow(x, own.root(), place.x, place.y, unsigned(place.width),
                                     unsigned(place.height), 0, 0, color);
    XStoreName(x, identifier, "another program");
    XSelectInput(x, identifier, KeyPressMask | ButtonPressMask | FocusChangeMask | ExposureMask);
    XSizeHints size{};
    size.flags = USPosition | USSize;
    size.x = place.x;
    size.y = place.y;
    XSetWMNormalHints(x, identifier, &size);
    XWMHints hints{};
    hints.flags = InputHint;
    hints.input = True;
    XSetWMHints(x, identifier, &hints);
    if (kind == Kind::bar) {
        const unsigned long dock = own.atom("_NET_WM_WINDOW_TYPE_DOCK");
        XChangeProperty(x, identifier, own.atom("_NET_WM_WINDOW_TYPE"), XA_ATOM, 32,
                        PropModeReplace, reinterpret_cast<const unsigned char*>(&dock), 1);
    }
    if (kind == Kind::unmanaged) {
        XSetWindowAttributes attributes{};
        attributes.override_redirect = True;
        XChangeWindowAttributes(x, identifier, CWOverrideRedirect, &attributes);
    }
    XMapWindow(x, identifier);
    own.sync();
}

OtherProgram::~OtherProgram() {
    XDestroyWindow(own.display(), identifier);
    own.sync();
}

void OtherProgram::goToPlace() {
    XMoveWindow(own.display(), identifier, where.x, where.y);
    own.sync();
}

void OtherProgram::fillScreen() {
    Display* const x = own.display();
    if (!Windows(own).hasManager()) {
        XMoveResizeWindow(x, identifier, 0, 0, unsigned(own.width()), unsigned(own.height()));
        XRaiseWindow(x, identifier);
        return own.sync();
    }
    tellManager("_NET_WM_STATE", 1, long(own.atom("_NET_WM_STATE_FULLSCREEN")));
}

void OtherProgram::tellManager(const char* message, long first, long second) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = message[5] == 'W' ? identifier : own.root();
    event.xclient.message_type = own.atom(message);
    event.xclient.format = 32;
    event.xclient.data.l[0] = first;
    event.xclient.data.l[1] = second;
    XSendEvent(own.display(), own.root(), False, SubstructureNotifyMask | SubstructureRedirectMask,
               &event);
    own.sync();
}

void OtherProgram::changeWorkspace(int number) {
    tellManager("_NET_CURRENT_DESKTOP", number, CurrentTime);
}

void OtherProgram::reserve(const std::vector<unsigned long>& strut) {
    XChangeProperty(own.display(), identifier, own.atom("_NET_WM_STRUT_PARTIAL"), XA_CARDINAL, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(strut.data()),
                    int(strut.size()));
    own.sync();
}

void OtherProgram::takeKeyboard() {
    XSetInputFocus(own.display(), identifier, RevertToPointerRoot, CurrentTime);
    own.sync();
}

void OtherProgram::grabKeyboard() {
    if (XGrabKeyboard(own.display(), identifier, False, GrabModeAsync, GrabModeAsync,
                      CurrentTime) != GrabSuccess)
        throw std::runtime_error("the keyboard cannot be grabbed");
    own.sync();
}

void OtherProgram::releaseKeyboard() {
    XUngrabKeyboard(own.display(), CurrentTime);
    own.sync();
}

void OtherProgram::withdraw() {
    XUnmapWindow(own.display(), identifier);
    own.sync();
}

void OtherProgram::listen() {
    own.sync();
    while (XPending(own.display()) > 0) {
        XEvent event{};
        XNextEvent(own.display(), &event);
        if (event.type == Expose)
            exposed = true;
        if (event.type == ButtonPress)
            ++pressed;
        std::array<char, 16> text{};
        if (event.type == KeyPress) {
            const int count =
                XLookupString(&event.xkey, text.data(), text.size(), nullptr, nullptr);
            keys.append(text.data(), std::size_t(count));
        }
    }
}

const std::string& OtherProgram::received() {
    listen();
    draw();
    return keys;
}

bool OtherProgram::hasKeyboard() const {
    Window focused = 0;
    int revertTo = 0;
    XGetInputFocus(own.display(), &focused, &revertTo);
    return focused == identifier;
}

void OtherProgram::draw() const {
    constexpr int margin = 24;
    XDrawString(own.display(), identifier, DefaultGC(own.display(), DefaultScreen(own.display())),
                margin, margin, keys.data(), static_cast<int>(keys.size()));
    own.flush();
}

} // namespace kelo::screen
