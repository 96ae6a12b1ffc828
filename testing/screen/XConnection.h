#pragma once

#include <memory>
#include <string>

// Xlib's own names stay out of everybody else's file: it defines macros such as None and Bool.
struct _XDisplay;

namespace kelo::screen {

/// A window's number on its server; 0 is none.
using WindowId = unsigned long;

/// A connection of one's own to the X server that DISPLAY names, so that nothing passes through a
/// program under test. Used by one thread.
///
/// What it asks about may vanish between two questions. The answer is then simply empty: errors of
/// these connections are ignored, those of a toolkit's in the same process go where they went.
class XConnection {
public:
    /// Throws std::runtime_error when the display cannot be opened.
    XConnection();
    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    _XDisplay* display() const { return connection.get(); }
    WindowId root() const;
    /// Of the whole screen, all monitors together, in pixels.
    int width() const;
    int height() const;
    unsigned long atom(const std::string& name) const;

    /// Sends what has been asked for.
    void flush() const;
    /// Returns when the server has done everything that was asked for.
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
