#pragma once

#include "platform/SceneGraph.h"

#include <memory>
#include <string_view>
#include <vector>

namespace kelo::platform {

class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;
    virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;
};

/// The program as the desktop runs it.
class App {
public:
    virtual ~App() = default;
    virtual ApplicationDelegate& applicationDelegate() = 0;
    /// Read once, when the desktop is ready to show windows.
    virtual SceneGraph body() = 0;
};

/// A window of ours, to present something over.
class Window {
public:
    virtual ~Window() = default;
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
