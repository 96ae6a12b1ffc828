#pragma once

#include "testing/screen/Pointer.h"
#include "testing/screen/XConnection.h"

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kelo::screen {

/// A window as the server and the window manager know it.
struct ScreenWindow {
    WindowId identifier = 0;
    std::string title;
    /// The one that opened it, by its own word; 0 when it did not say.
    pid_t process = 0;
    /// Upper left corner on the screen, without the manager's frame.
    Point origin;
    int width = 0;
    int height = 0;
    /// It is on the screen, perhaps behind something else.
    bool isMapped = false;
    /// No window manager has a say in it.
    bool overridesRedirect = false;
};

/// The windows of the screen, asked anew every time.
class Windows {
public:
    /// The connection must outlive it.
    explicit Windows(const XConnection& connection);

    // Properties by their names; empty when there is none of that kind.
    std::vector<unsigned long> numbers(WindowId window, const std::string& property) const;
    std::string text(WindowId window, const std::string& property) const;

    ScreenWindow describe(WindowId window) const;
    bool hasManager() const;
    /// The manager's list of the programs' windows, in the order in which they were opened.
    std::vector<ScreenWindow> managed() const;
    /// Everything that lies on the root, from the back to the front: the manager's frames, menus,
    /// panels, and windows that are not shown.
    std::vector<ScreenWindow> all() const;
    /// The one that the manager says is active.
    std::optional<ScreenWindow> active() const;
    /// The one that gets the keys; 0 for none, 1 for the one below the pointer.
    WindowId focused() const;
    /// The direct descendants of a window, from the back to the front.
    std::vector<WindowId> children(WindowId window) const;

    /// Sends a message about the window to the window manager as a taskbar does, for instance
    /// _NET_ACTIVE_WINDOW or _NET_CLOSE_WINDOW. The manager obeys it whoever has the focus.
    void tellManager(WindowId window, const std::string& message) const;
    /// Puts it away, as the button in the window's frame does.
    void minimize(WindowId window) const;

    /// The windows as text, one a line.
    static std::string picture(const std::vector<ScreenWindow>& windows);

private:
    const XConnection& connection;
};

} // namespace kelo::screen
