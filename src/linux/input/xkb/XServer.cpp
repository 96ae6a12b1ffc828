#include "linux/input/xkb/XServer.h"

#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>

#include <algorithm>
#include <memory>
#include <span>

namespace kelo::input {

namespace {

std::vector<std::string> extensionsOf(Display* connection) {
    int count = 0;
    const std::unique_ptr<char*, decltype(&XFreeExtensionList)> names(
        XListExtensions(connection, &count), XFreeExtensionList);
    if (!names)
        return {};
    const std::span all(names.get(), static_cast<std::size_t>(count));
    return {all.begin(), all.end()};
}

// Monitors rather than outputs: their names come in one answer, and a name stays valid even if its
// monitor is unplugged meanwhile.
std::vector<std::string> monitorsOf(Display* connection) {
    int firstEvent = 0;
    int firstError = 0;
    int major = 0;
    int minor = 0;
    if (!XRRQueryExtension(connection, &firstEvent, &firstError) ||
        !XRRQueryVersion(connection, &major, &minor) || major < 1 || (major == 1 && minor < 5))
        return {};
    int count = 0;
    const std::unique_ptr<XRRMonitorInfo, decltype(&XRRFreeMonitors)> monitors(
        XRRGetMonitors(connection, DefaultRootWindow(connection), True, &count), XRRFreeMonitors);
    std::vector<std::string> names;
    if (!monitors)
        return names;
    for (const XRRMonitorInfo& monitor :
         std::span(monitors.get(), static_cast<std::size_t>(std::max(count, 0)))) {
        const std::unique_ptr<char, decltype(&XFree)> name(XGetAtomName(connection, monitor.name),
                                                           XFree);
        if (name)
            names.emplace_back(name.get());
    }
    return names;
}

} // namespace

XServer XServer::of(Display* connection) {
    return {extensionsOf(connection), monitorsOf(connection)};
}

bool XServer::isXwayland() const {
    // Newer servers have the extension. Older ones give their monitors names of their own instead.
    return std::ranges::find(extensions, "XWAYLAND") != extensions.end() ||
           std::ranges::any_of(
               monitors, [](const std::string& name) { return name.starts_with("XWAYLAND"); });
}

} // namespace kelo::input
