#pragma once

#include "screen/XConnection.h"

#include <string>

namespace kelo::test {

/// A window of another program, on a connection of its own: a plain rectangle that writes down the
/// keys it gets.
class OtherProgram {
public:
    struct Place {
        int x = 100;
        int y = 100;
        int width = 300;
        int height = 200;
    };
    explicit OtherProgram(Place place);
    OtherProgram() : OtherProgram(Place()) {}
    /// Ends the program: its window goes.
    ~OtherProgram();
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    /// Asks the window manager for the whole screen, or takes it where there is none.
    void fillScreen(bool hasManager);
    /// Takes the keyboard itself, as programs do where no window manager gives it to them.
    void takeKeyboard();
    /// Reads what has come in.
    void listen();
    const std::string& typed() const { return keys; }
    bool isExposed() const { return exposed; }
    screen::WindowId window() const { return identifier; }

    const screen::XConnection& connection() const { return own; }

private:
    screen::XConnection own;
    screen::WindowId identifier = 0;
    std::string keys;
    bool exposed = false;
};

} // namespace kelo::test
