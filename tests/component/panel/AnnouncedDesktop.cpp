#include "component/panel/AnnouncedDesktop.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace kelo::test {

AnnouncedDesktop::~AnnouncedDesktop() {
    for (const auto& [window, property] : announced)
        XDeleteProperty(own.display(), window, own.atom(property));
    own.sync();
}

void AnnouncedDesktop::numbers(const std::string& property, const Numbers& values) {
    set(own.root(), property, XA_CARDINAL, values);
}

void AnnouncedDesktop::windows(const std::string& property, const Numbers& identifiers) {
    set(own.root(), property, XA_WINDOW, identifiers);
}

void AnnouncedDesktop::numbersOf(screen::WindowId window, const std::string& property,
                                 const Numbers& values) {
    set(window, property, XA_CARDINAL, values);
}

void AnnouncedDesktop::typeOf(screen::WindowId window, const std::string& type) {
    set(window, "_NET_WM_WINDOW_TYPE", XA_ATOM, {own.atom(type)});
}

void AnnouncedDesktop::focus(screen::WindowId window) {
    XSetInputFocus(own.display(), window, RevertToPointerRoot, CurrentTime);
    own.sync();
}

screen::WindowId AnnouncedDesktop::addChild(screen::WindowId parent, int width, int height) {
    const screen::WindowId child = XCreateSimpleWindow(own.display(), parent, 5, 5, unsigned(width),
                                                       unsigned(height), 0, 0, 0);
    XMapWindow(own.display(), child);
    own.sync();
    return child;
}

void AnnouncedDesktop::set(screen::WindowId window, const std::string& property, unsigned long type,
                           const Numbers& values) {
    XChangeProperty(own.display(), window, own.atom(property), type, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(values.data()), int(values.size()));
    own.sync();
    announced.emplace_back(window, property);
}

} // namespace kelo::test
