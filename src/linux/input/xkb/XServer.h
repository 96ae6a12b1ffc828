#pragma once

#include <string>
#include <vector>

typedef struct _XDisplay Display;

namespace kelo::input {

/// What an X server tells about itself.
struct XServer {
    /// Names of its extensions.
    std::vector<std::string> extensions;
    /// Names of its monitors; empty if it does not tell them.
    std::vector<std::string> monitors;

    /// Asks the server, in a few round trips.
    static XServer of(Display* connection);

    /// Whether it serves the X11 programs of a Wayland desktop. Such a server sees keys only while
    /// one of its own windows has the keyboard.
    bool isXwayland() const;
};

} // namespace kelo::input
