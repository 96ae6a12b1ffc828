#include "linux/panel/MonitorScreen.h"

#include "linux/gobject/GObjectPointer.h"

#include <algorithm>

namespace kelo::panel {

std::optional<platform::Rectangle> firstMonitor(GdkDisplay* display) {
    GListModel* const monitors = gdk_display_get_monitors(display);
    std::optional<GdkRectangle> first;
    int bottom = 0;
    for (guint index = 0; index < g_list_model_get_n_items(monitors); ++index) {
        const auto monitor = gobject::GObjectPointer<GdkMonitor>::adopt(
            static_cast<GdkMonitor*>(g_list_model_get_item(monitors, index)));
        GdkRectangle area{};
        gdk_monitor_get_geometry(monitor.get(), &area);
        bottom = first ? std::max(bottom, area.y + area.height) : area.y + area.height;
        if (!first)
            first = area;
    }
    if (!first)
        return std::nullopt;
    return platform::Rectangle{double(first->x), double(bottom - first->y - first->height),
                               double(first->width), double(first->height)};
}

} // namespace kelo::panel
