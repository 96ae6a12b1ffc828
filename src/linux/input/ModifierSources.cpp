#include "linux/input/ModifierSources.h"

#include "linux/gobject/GObjectPointer.h"
#include "linux/input/evdev/EvdevModifierSource.h"
#include "linux/input/portal/PortalModifierSource.h"
#include "linux/input/xkb/XServer.h"
#include "linux/input/xkb/XkbModifierSource.h"
#include "linux/window/X11Toolkit.h"
#include "posix/FileDescriptor.h"

#include <glib.h>

#include <cstring>
#include <memory>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>

namespace kelo::input {

namespace {

std::string environment(const char* name) {
    const char* const value = g_getenv(name);
    return value ? value : "";
}

bool isWaylandThere() {
    std::string path = environment("WAYLAND_DISPLAY");
    if (path.empty())
        path = "wayland-0";
    if (path.front() != '/') {
        const std::string folder = environment("XDG_RUNTIME_DIR");
        if (folder.empty())
            return false;
        path = folder + "/" + path;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path))
        return false;
    std::memcpy(address.sun_path, path.c_str(), path.size());
    const posix::FileDescriptor socket(
        ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return socket && ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address),
                               sizeof(address)) == 0;
}

/// An X11 program on a Wayland desktop is told no more than any other there.
DisplayKind kindOfServer(Display* connection) {
    return XServer::of(connection).isXwayland() ? DisplayKind::wayland : DisplayKind::x11;
}

DisplayKind kindOfX11Display() {
    const auto close = [](Display* display) { XCloseDisplay(display); };
    const std::unique_ptr<Display, decltype(close)> connection(XOpenDisplay(nullptr), close);
    return connection ? kindOfServer(connection.get()) : DisplayKind::none;
}

/// Whether the user lets the toolkit use this kind of display (GDK_BACKEND).
bool isAllowed(std::string_view kind) {
    const std::string allowed = environment("GDK_BACKEND");
    if (allowed.empty())
        return true;
    const std::string list = "," + allowed + ",";
    return list.find("," + std::string(kind) + ",") != std::string::npos ||
           list.find(",*,") != std::string::npos;
}

} // namespace

DisplayKind displayKind(GdkDisplay* display) {
    if (!display)
        return DisplayKind::none;
    return window::isX11(display) ? kindOfServer(window::xlibDisplay(display))
                                  : DisplayKind::wayland;
}

DisplayKind displayKindOfEnvironment() {
    if (isAllowed("wayland") && isWaylandThere())
        return DisplayKind::wayland;
    return isAllowed("x11") ? kindOfX11Display() : DisplayKind::none;
}

SourceList sourcesForEveryProgram(DisplayKind kind, const std::string& displayName) {
    SourceList sources;
    // On a Wayland desktop, the X server sees the keys only while one of its own windows has the
    // keyboard.
    if (kind != DisplayKind::wayland)
        sources.push_back(std::make_unique<XkbModifierSource>(displayName));
    sources.push_back(std::make_unique<EvdevModifierSource>());
    sources.push_back(std::make_unique<PortalModifierSource>());
    return sources;
}

} // namespace kelo::input
