#pragma once

#include "linux/gobject/SignalHandler.h"
#include "linux/window/Toplevels.h"

#include <memory>
#include <vector>

namespace kelo::webkit {

/// Keeps the caret of pages shown without blinking, by settings of the toolkit that the engine
/// follows. While a text field of our own has the keyboard, they have the user's values, and so
/// they have once this is destroyed. GTK must be initialized. Main thread only.
///
/// The toolkit's text fields stop blinking when the user has been idle for a while
/// (gtk-cursor-blink-timeout, ten seconds by default). The engine knows no such end, and each blink
/// keeps threads of two processes awake. A user who has made that time longer than a minute wants
/// to see carets blink, and does.
class SteadyCaret {
public:
    SteadyCaret();
    ~SteadyCaret();
    SteadyCaret(const SteadyCaret&) = delete;
    SteadyCaret& operator=(const SteadyCaret&) = delete;

private:
    class Hold;
    /// Shared with the windows, which outlive this.
    std::shared_ptr<Hold> hold;
    std::vector<gobject::SignalConnection> connections;
    window::ToplevelWatch toplevels;
};

} // namespace kelo::webkit
