#include "component/panel/OtherProgram.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <array>

namespace kelo::test {

OtherProgram::OtherProgram(Place place) {
    Display* const x = own.display();
    identifier = XCreateSimpleWindow(x, own.root(), place.x, place.y, unsigned(place.width),
                                     unsigned(place.height), 0, 0, 0xcc9933);
    XStoreName(x, identifier, "another program");
    XSelectInput(x, identifier, KeyPressMask | FocusChangeMask | ExposureMask);
    XSizeHints size{};
    size.flags = USPosition | USSize;
    XSetWMNormalHints(x, identifier, &size);
    XWMHints hints{};
    hints.flags = InputHint;
    hints.input = True;
    XSetWMHints(x, identifier, &hints);
    XMapWindow(x, identifier);
    own.sync();
}

OtherProgram::~OtherProgram() {
    XDestroyWindow(own.display(), identifier);
    own.sync();
}

void OtherProgram::fillScreen(bool hasManager) {
    Display* const x = own.display();
    if (!hasManager) {
        XMoveResizeWindow(x, identifier, 0, 0, unsigned(own.width()), unsigned(own.height()));
        XRaiseWindow(x, identifier);
        return own.sync();
    }
    XEvent message{};
    message.xclient.type = ClientMessage;
    message.xclient.window = identifier;
    message.xclient.message_type = own.atom("_NET_WM_STATE");
    message.xclient.format = 32;
    message.xclient.data.l[0] = 1;
    message.xclient.data.l[1] = long(own.atom("_NET_WM_STATE_FULLSCREEN"));
    XSendEvent(x, own.root(), False, SubstructureNotifyMask | SubstructureRedirectMask, &message);
    own.sync();
}

void OtherProgram::takeKeyboard() {
    XSetInputFocus(own.display(), identifier, RevertToPointerRoot, CurrentTime);
    own.sync();
}

void OtherProgram::listen() {
    own.sync();
    while (XPending(own.display()) > 0) {
        XEvent event{};
        XNextEvent(own.display(), &event);
        if (event.type == Expose)
            exposed = true;
        std::array<char, 16> text{};
        if (event.type == KeyPress) {
            const int count = XLookupString(&event.xkey, text.data(), text.size(), nullptr, nullptr);
            keys.append(text.data(), std::size_t(count));
        }
    }
}

} // namespace kelo::test
