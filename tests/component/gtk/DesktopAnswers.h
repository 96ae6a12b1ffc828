#pragma once

#include "component/gtk/DesktopOnBus.h"
#include "component/gtk/RunningProgram.h"

#include <giomm/dbusconnection.h>

namespace kelo::tests {

/// Until the program has what the desktop has answered by now. On the program's own connection,
/// messages keep their order.
inline void awaitAnswers(const DesktopOnBus& desktop) {
    bool isAnswered = false;
    const auto bus = Gio::DBus::Connection::get_sync(Gio::DBus::BusType::SESSION);
    bus->call(
        "/", "org.freedesktop.DBus.Peer", "Ping", {},
        [&](const Glib::RefPtr<Gio::AsyncResult>&) { isAnswered = true; }, desktop.name());
    RunningProgram::until("the desktop has answered", [&] { return isAnswered; });
    RunningProgram::settle();
}

} // namespace kelo::tests
