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

/// Something that the user can ask of the program from outside its windows: on the command line, in
/// a desktop's list of programs, by a key that the desktop gives it.
struct ProgramAction {
    /// Lower-case letters and dashes. "--NAME" on the command line asks for it.
    std::string name;
    /// A short line for people, without a full stop.
    std::string description;
    std::function<void()> action;
};

/// The program as the desktop runs it.
class App {
public:
    virtual ~App() = default;
    virtual ApplicationDelegate& applicationDelegate() = 0;
    /// Read once, when the desktop is ready to show windows.
    virtual SceneGraph body() = 0;
    /// Read once, before body(). An action may be asked for while no window is open.
    virtual std::vector<ProgramAction> actions() = 0;
};

/// The running program. Main thread only.
class Application {
public:
    virtual ~Application() = default;

    /// Runs the app until it is terminated and returns the exit status. When the program runs
    /// already for this user, asks that one to open or raise its main window and returns.
    virtual int run(App& app) = 0;

    /// Brings the program in front of others.
    virtual void activate() = 0;
    virtual void terminate() = 0;
    /// Opens a window of the group, or raises the open one.
    virtual void openWindow(std::string_view identifier) = 0;

    /// The window with the keyboard focus, null when none of ours has it.
    virtual std::shared_ptr<Window> keyWindow() = 0;
    /// Most recently used first.
    virtual std::vector<std::shared_ptr<Window>> windows() = 0;
    virtual std::shared_ptr<Window> makePlainWindow() = 0;
};

} // namespace kelo::platform
