#pragma once

#include "testing/screen/Pointer.h"
#include "testing/screen/XConnection.h"

#include <string>

namespace kelo::screen {

/// A window of another program, on a connection of its own: a plain sheet of paper that shows, and
/// tells, what is typed into it. It asks for nothing that a window manager would not give a program
/// of the simplest kind.
class OtherProgram {
public:
    struct Place {
        Point corner;
        int width = 0;
        int height = 0;
    };
    /// A window there; the window manager may move it.
    explicit OtherProgram(Place place);
    /// Ends the program: its window goes.
    ~OtherProgram();
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    /// Asks the window manager for the whole screen.
    void fillScreen() const;
    /// Whether the keys go to it.
    bool hasKeyboard() const;
    /// The text of all keys pressed so far, without those that make no text.
    const std::string& received();
    WindowId window() const { return identifier; }

private:
    void draw() const;

    XConnection own;
    WindowId identifier = 0;
    std::string text;
};

} // namespace kelo::screen
