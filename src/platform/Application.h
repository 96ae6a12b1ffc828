#pragma once

#include "platform/SceneGraph.h"
#include "platform/Window.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::platform {

class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;
    virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;
};

/// An action that the user can start from outside the program's windows: from the command line,
/// from the desktop's list of programs, or with a key that the desktop assigns to it.
struct ProgramAction {
    /// Lower-case letters and dashes. "--NAME" on the command line starts the action.
    std::string name;
    std::function<void()> action;
};

/// The program, as the desktop sees it.
class App {
public:
    virtual ~App() = default;
    virtual ApplicationDelegate& applicationDelegate() = 0;
    /// Called once, when the desktop is ready to show windows.
    virtual SceneGraph body() = 0;
    /// Called once, before body(). An action may run while no window is open.
    virtual std::vector<ProgramAction> actions() = 0;
};

/// The running program. Main thread only.
class Application {
public:
    virtual ~Application() = default;

    /// Runs the app until it is terminated, and returns the exit status. If the program is already
    /// running for this user, asks that process to open or raise its main window, and returns.
    virtual int run(App& app) = 0;

    /// Brings the program to the front.
    virtual void activate() = 0;
    virtual void terminate() = 0;
    /// Opens a window of the group, or raises the one that is open.
    virtual void openWindow(std::string_view identifier) = 0;

    /// The program's window with the keyboard focus; null if there is none.
    virtual std::shared_ptr<Window> keyWindow() = 0;
    /// Most recently used first.
    virtual std::vector<std::shared_ptr<Window>> windows() = 0;
    virtual std::shared_ptr<Window> makePlainWindow() = 0;
};

} // namespace kelo::platform
