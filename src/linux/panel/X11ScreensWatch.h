#pragma once

#include "linux/gobject/MainLoopSource.h"
#include "linux/panel/X11Connection.h"

#include <functional>

namespace kelo::panel {

/// Reports that monitors or work areas have changed. Main thread only.
class X11ScreensWatch {
public:
    explicit X11ScreensWatch(X11Connection connection)
        : connection(connection), randrEvents(connection.randrEvents()) {}

    /// Called once for all events of one change.
    void setHandler(std::function<void()> changed) { handler = std::move(changed); }
    /// To be called with each event of the display. Changes of work areas need
    /// X11Connection::followRootProperties().
    void handle(const XEvent& event);

private:
    bool reportsScreens(const XEvent& event) const;

    X11Connection connection;
    int randrEvents;
    std::function<void()> handler;
    gobject::ScheduledJob report;
};

} // namespace kelo::panel
