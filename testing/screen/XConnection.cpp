#include "testing/screen/XConnection.h"

#include <X11/Xlib.h>

#include <set>
#include <stdexcept>

namespace kelo::screen {

namespace {

/// The connections whose errors are ours to ignore.
std::set<Display*>& ours() {
    static std::set<Display*> displays;
    return displays;
}

XErrorHandler previous = nullptr;

int handleError(Display* display, XErrorEvent* error) {
    if (ours().contains(display) || !previous)
        return 0;
    return previous(display, error);
}

/// A toolkit that has started in between may have put its own handler in the place of ours.
void takeErrors() {
    const XErrorHandler found = XSetErrorHandler(handleError);
    if (found != handleError)
        previous = found;
}

} // namespace

void XConnection::Closer::operator()(_XDisplay* display) const {
    ours().erase(display);
    XCloseDisplay(display);
}

XConnection::XConnection() : connection(XOpenDisplay(nullptr)) {
    if (!connection)
        throw std::runtime_error("The X display cannot be opened.");
    ours().insert(connection.get());
    takeErrors();
}

XConnection::~XConnection() = default;

WindowId XConnection::root() const {
    return DefaultRootWindow(display());
}

int XConnection::width() const {
    return DisplayWidth(display(), DefaultScreen(display()));
}

int XConnection::height() const {
    return DisplayHeight(display(), DefaultScreen(display()));
}

unsigned long XConnection::atom(const std::string& name) const {
    return XInternAtom(display(), name.c_str(), False);
}

void XConnection::flush() const {
    XFlush(display());
}

void XConnection::sync() const {
    XSync(display(), False);
}

int XConnection::descriptor() const {
    return ConnectionNumber(display());
}

} // namespace kelo::screen
