#pragma once

#include "screen/XConnection.h"

#include <string>
#include <vector>

namespace kelo::test {

/// A window of another program, on a connection of its own: a plain rectangle that writes down the
/// keys it gets.
class OtherProgram {
public:
    enum class Kind { ordinary, bar };
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
    /// Asks the window manager for the whole screen, or takes it where there is none.
    void fillScreen(bool hasManager);
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

    /// Reads what has come in.
    void listen();
    const std::string& typed() const { return keys; }
    int clicks() const { return pressed; }
    Place place() const { return where; }
    bool isExposed() const { return exposed; }
    screen::WindowId window() const { return identifier; }

    const screen::XConnection& connection() const { return own; }

private:
    void tellManager(const char* message, long first, long second);

    screen::XConnection own;
    screen::WindowId identifier = 0;
    Place where;
    std::string keys;
    int pressed = 0;
    bool exposed = false;
};

} // namespace kelo::test
