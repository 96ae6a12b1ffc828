#pragma once

#include "testing/screen/XConnection.h"

#include <string>
#include <vector>

namespace kelo::screen {

/// A window of another program, on an X connection of its own: a plain rectangle that records the
/// keys it gets. Asks for nothing that a window manager would not give the simplest of programs.
class OtherProgram {
public:
    enum class Kind {
        ordinary,
        bar,       ///< a dock
        unmanaged, ///< a window that the window manager leaves alone (override-redirect)
    };
    struct Place {
        int x = 100;
        int y = 100;
        int width = 300;
        int height = 200;
    };
    static constexpr unsigned color = 0xcc9933; ///< 0xRRGGBB

    explicit OtherProgram(Place place, Kind kind = Kind::ordinary);
    OtherProgram() : OtherProgram(Place()) {}
    /// Ends the program: its window goes.
    ~OtherProgram();
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    /// Window managers like to place a window themselves when it appears.
    void goToPlace();
    /// Asks the window manager for the whole screen, or takes it if there is no manager.
    void fillScreen();
    /// Takes the keyboard itself, as programs do where no window manager gives it to them.
    void takeKeyboard();
    /// Keeps every key for itself without having the keyboard, as an open menu does.
    void grabKeyboard();
    void releaseKeyboard();
    /// Takes the window off the screen; it still exists.
    void withdraw();
    /// Asks the window manager for another workspace.
    void changeWorkspace(int number);
    /// Announces that it keeps a part of the desktop's edges for itself (_NET_WM_STRUT_PARTIAL).
    void reserve(const std::vector<unsigned long>& strut);

    /// Reads the events that have arrived.
    void listen();
    /// The text of all keys that listen() has seen, without keys that make no text.
    const std::string& typed() const { return keys; }
    /// Listens, and shows what has been typed for whoever looks at a picture.
    const std::string& received();
    bool hasKeyboard() const;
    int clicks() const { return pressed; }
    Place place() const { return where; }
    bool isExposed() const { return exposed; }
    WindowId window() const { return identifier; }

    const XConnection& connection() const { return own; }

private:
    void draw() const;
    void tellManager(const char* message, long first, long second);

    XConnection own;
    WindowId identifier = 0;
    Place where;
    std::string keys;
    int pressed = 0;
    bool exposed = false;
};

} // namespace kelo::screen
