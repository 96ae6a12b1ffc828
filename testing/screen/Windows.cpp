#include "testing/screen/Windows.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <memory>
#include <sstream>

namespace kelo::screen {

namespace {

struct FreeMemory {
    void operator()(void* memory) const { XFree(memory); }
};

/// A property's value, as long as it has the format asked for.
struct Property {
    std::unique_ptr<unsigned char, FreeMemory> data;
    unsigned long count = 0;
};

Property read(const XConnection& connection, WindowId window, const std::string& name,
              int wantedFormat) {
    constexpr long longest = 1 << 20;
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(connection.display(), window, connection.atom(name), 0, longest, False,
                       AnyPropertyType, &type, &format, &count, &rest, &data);
    Property result{std::unique_ptr<unsigned char, FreeMemory>(data), count};
    if (!data || format != wantedFormat)
        return {};
    return result;
}

} // namespace

Windows::Windows(const XConnection& connection) : connection(connection) {}

std::vector<unsigned long> Windows::numbers(WindowId window, const std::string& property) const {
    const Property found = read(connection, window, property, 32);
    // Xlib gives each value of 32 bits in a long.
    const auto* values = reinterpret_cast<const unsigned long*>(found.data.get());
    return {values, values + found.count};
}

std::string Windows::text(WindowId window, const std::string& property) const {
    const Property found = read(connection, window, property, 8);
    if (!found.data)
        return {};
    return {reinterpret_cast<const char*>(found.data.get()), found.count};
}

ScreenWindow Windows::describe(WindowId window) const {
    ScreenWindow result;
    result.identifier = window;
    result.title = text(window, "_NET_WM_NAME");
    const auto process = numbers(window, "_NET_WM_PID");
    result.process = process.empty() ? 0 : static_cast<pid_t>(process.front());
    XWindowAttributes attributes{};
    if (XGetWindowAttributes(connection.display(), window, &attributes)) {
        result.width = attributes.width;
        result.height = attributes.height;
        result.isMapped = attributes.map_state == IsViewable;
        result.overridesRedirect = attributes.override_redirect == True;
    }
    Window child = 0;
    XTranslateCoordinates(connection.display(), window, connection.root(), 0, 0, &result.origin.x,
                          &result.origin.y, &child);
    return result;
}

bool Windows::hasManager() const {
    return !numbers(connection.root(), "_NET_SUPPORTING_WM_CHECK").empty();
}

std::vector<ScreenWindow> Windows::managed() const {
    std::vector<ScreenWindow> result;
    for (const WindowId window : numbers(connection.root(), "_NET_CLIENT_LIST"))
        result.push_back(describe(window));
    return result;
}

std::vector<ScreenWindow> Windows::all() const {
    std::vector<ScreenWindow> result;
    for (const WindowId window : children(connection.root()))
        result.push_back(describe(window));
    return result;
}

std::vector<WindowId> Windows::children(WindowId window) const {
    Window root = 0;
    Window parent = 0;
    Window* list = nullptr;
    unsigned count = 0;
    if (!XQueryTree(connection.display(), window, &root, &parent, &list, &count))
        return {};
    const std::unique_ptr<Window, FreeMemory> owned(list);
    return {list, list + count};
}

std::optional<ScreenWindow> Windows::active() const {
    const auto found = numbers(connection.root(), "_NET_ACTIVE_WINDOW");
    if (found.empty() || found.front() == 0)
        return std::nullopt;
    return describe(found.front());
}

WindowId Windows::focused() const {
    Window window = 0;
    int revertTo = 0;
    XGetInputFocus(connection.display(), &window, &revertTo);
    return window;
}

void Windows::tellManager(WindowId window, const std::string& message) const {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = connection.atom(message);
    event.xclient.format = 32;
    // For the messages about one window the first value, or the second for the closing of it, says
    // who asks; 2 is a pager, whom the manager obeys.
    const bool timeFirst = message == "_NET_CLOSE_WINDOW";
    event.xclient.data.l[timeFirst ? 1 : 0] = 2;
    XSendEvent(connection.display(), connection.root(), False,
               SubstructureNotifyMask | SubstructureRedirectMask, &event);
    connection.flush();
}

void Windows::minimize(WindowId window) const {
    XIconifyWindow(connection.display(), window, DefaultScreen(connection.display()));
    connection.flush();
}

std::string Windows::picture(const std::vector<ScreenWindow>& windows) {
    std::ostringstream text;
    for (const auto& window : windows) {
        text << '"' << window.title << "\" of process " << window.process << ", " << window.width
             << 'x' << window.height << '+' << window.origin.x << '+' << window.origin.y
             << (window.isMapped ? "" : ", hidden")
             << (window.overridesRedirect ? ", not managed" : "") << '\n';
    }
    return text.str();
}

} // namespace kelo::screen
