#pragma once

#include "testing/screen/Pointer.h"
#include "testing/screen/XConnection.h"

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kelo::screen {

/// What the server and the window manager know about a window.
struct ScreenWindow {
    WindowId identifier = 0;
    std::string title;
    /// The process that opened it, as the window itself says; 0 if it does not say.
    pid_t process = 0;
    /// Upper left corner on the screen, without the manager's frame.
    Point origin;
    int width = 0;
    int height = 0;
    /// Whether it is on the screen, even if other windows cover it.
    bool isMapped = false;
    /// Whether window managers leave it alone.
    bool overridesRedirect = false;
};

/// Queries about the windows of the screen. Nothing is cached.
class Windows {
public:
    /// The connection must outlive it.
    explicit Windows(const XConnection& connection);

    // Properties by name; empty if there is no such property.
    std::vector<unsigned long> numbers(WindowId window, const std::string& property) const;
    std::string text(WindowId window, const std::string& property) const;

    ScreenWindow describe(WindowId window) const;
    bool hasManager() const;
    /// The manager's list of the programs' windows, in the order in which they were opened.
    std::vector<ScreenWindow> managed() const;
    /// All children of the root window, from back to front: the manager's frames, menus, panels,
    /// and hidden windows.
    std::vector<ScreenWindow> all() const;
    /// The window that the manager reports as active.
    std::optional<ScreenWindow> active() const;
    /// The window with the keyboard focus; 0 for none, 1 if the focus follows the pointer.
    WindowId focused() const;
    /// The direct descendants of a window, from the back to the front.
    std::vector<WindowId> children(WindowId window) const;

    /// Sends a message about the window to the window manager as a taskbar does, for instance
    /// _NET_ACTIVE_WINDOW or _NET_CLOSE_WINDOW. The manager obeys it whoever has the focus.
    void tellManager(WindowId window, const std::string& message) const;
    /// Minimizes it, as the button in the window's frame does.
    void minimize(WindowId window) const;

    /// The windows as text, one a line.
    static std::string picture(const std::vector<ScreenWindow>& windows);

private:
    const XConnection& connection;
};

} // namespace kelo::screen
