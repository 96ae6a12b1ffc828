#pragma once

#include "linux/gtk/application/TrayQuestion.h"
#include "linux/gtk/kit/StateFile.h"

#include <giomm/application.h>

#include <optional>

namespace kelo::gtk {

/// Tells the user once that the program keeps running without a window, where no tray shows it.
/// Main thread only.
class StayingNotice {
public:
    /// The application has the actions "open" and "quit". The state keeps that the user was told.
    /// Both must outlive this object.
    StayingNotice(Gio::Application& application, StateFile& state)
        : application(application), state(state) {}

    /// The last window has been closed.
    void windowClosed();
    /// A window is open again.
    void windowOpened();

private:
    void show();

    Gio::Application& application;
    StateFile& state;
    std::optional<TrayQuestion> question; ///< while no window is open
};

} // namespace kelo::gtk
