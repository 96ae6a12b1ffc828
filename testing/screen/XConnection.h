#pragma once

#include <memory>
#include <string>

// Xlib's header is not included here, because it defines macros such as None and Bool.
struct _XDisplay;

namespace kelo::screen {

/// A window's number on its server; 0 is none.
using WindowId = unsigned long;

/// A separate connection to the X server that DISPLAY names, so that nothing passes through the
/// program under test. Used by one thread.
///
/// A window may disappear between two requests; the second then has an empty result. Errors of
/// these connections are ignored. Errors of a toolkit in the same process are handled as before.
class XConnection {
public:
    /// Throws std::runtime_error when the display cannot be opened.
    XConnection();
    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    _XDisplay* display() const { return connection.get(); }
    WindowId root() const;
    /// Size of the whole screen, all monitors together, in pixels.
    int width() const;
    int height() const;
    unsigned long atom(const std::string& name) const;

    /// Sends all pending requests.
    void flush() const;
    /// Waits until the server has processed all requests.
    void sync() const;
    /// A file descriptor to poll for what the server sends.
    int descriptor() const;

private:
    struct Closer {
        void operator()(_XDisplay* display) const;
    };
    std::unique_ptr<_XDisplay, Closer> connection;
};

} // namespace kelo::screen
