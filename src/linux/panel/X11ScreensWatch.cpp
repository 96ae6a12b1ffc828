#include "linux/panel/X11ScreensWatch.h"

#include <X11/extensions/Xrandr.h>

namespace kelo::panel {

bool X11ScreensWatch::reportsScreens(const XEvent& event) const {
    if (event.type == PropertyNotify)
        return event.xproperty.window == connection.root() &&
               event.xproperty.atom == connection.atom("_NET_WORKAREA");
    return randrEvents != 0 && (event.type == randrEvents + RRScreenChangeNotify ||
                                event.type == randrEvents + RRNotify);
}

// Later, because one change comes as several events.
void X11ScreensWatch::handle(const XEvent& event) {
    if (report.isWaiting() || !reportsScreens(event))
        return;
    report.whenIdle([this] {
        if (handler)
            handler();
    });
}

} // namespace kelo::panel
