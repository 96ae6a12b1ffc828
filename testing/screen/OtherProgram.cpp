#include "testing/screen/OtherProgram.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <array>

namespace kelo::screen {

namespace {

constexpr unsigned long paper = 0xF4E9C8;
constexpr int margin = 24;

} // namespace

OtherProgram::OtherProgram(Place place) {
    Display* const display = own.display();
    identifier = XCreateSimpleWindow(display, own.root(), place.corner.x, place.corner.y,
                                     static_cast<unsigned>(place.width),
                                     static_cast<unsigned>(place.height), 0, 0, paper);
    XStoreName(display, identifier, "Another program");
    XSelectInput(display, identifier, KeyPressMask | ExposureMask);
    XSizeHints size{};
    size.flags = USPosition | USSize;
    size.x = place.corner.x;
    size.y = place.corner.y;
    size.width = place.width;
    size.height = place.height;
    XSetWMNormalHints(display, identifier, &size);
    XWMHints hints{};
    hints.flags = InputHint;
    hints.input = True;
    XSetWMHints(display, identifier, &hints);
    XMapWindow(display, identifier);
    own.sync();
}

OtherProgram::~OtherProgram() {
    XDestroyWindow(own.display(), identifier);
    own.sync();
}

void OtherProgram::fillScreen() const {
    constexpr long add = 1;
    XEvent message{};
    message.xclient.type = ClientMessage;
    message.xclient.window = identifier;
    message.xclient.message_type = own.atom("_NET_WM_STATE");
    message.xclient.format = 32;
    message.xclient.data.l[0] = add;
    message.xclient.data.l[1] = static_cast<long>(own.atom("_NET_WM_STATE_FULLSCREEN"));
    XSendEvent(own.display(), own.root(), False, SubstructureNotifyMask | SubstructureRedirectMask,
               &message);
    own.sync();
}

bool OtherProgram::hasKeyboard() const {
    Window focused = 0;
    int revertTo = 0;
    XGetInputFocus(own.display(), &focused, &revertTo);
    return focused == identifier;
}

const std::string& OtherProgram::received() {
    own.sync();
    while (XPending(own.display()) > 0) {
        XEvent event{};
        XNextEvent(own.display(), &event);
        if (event.type != KeyPress)
            continue;
        std::array<char, 16> typed{};
        const int count = XLookupString(&event.xkey, typed.data(), typed.size(), nullptr, nullptr);
        text.append(typed.data(), static_cast<std::size_t>(count));
    }
    draw();
    return text;
}

void OtherProgram::draw() const {
    XDrawString(own.display(), identifier, DefaultGC(own.display(), DefaultScreen(own.display())),
                margin, margin, text.data(), static_cast<int>(text.size()));
    own.flush();
}

} // namespace kelo::screen
