#pragma once

#include "testing/screen/Keyboard.h"
#include "testing/screen/Pointer.h"
#include "testing/screen/Windows.h"
#include "testing/screen/XConnection.h"

#include <gdk/gdk.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kelo::tests {

struct Color {
    int red = 0;
    int green = 0;
    int blue = 0;
    friend bool operator==(const Color&, const Color&) = default;
};

/// The display as the user has it: the picture on the screen, the keyboard and the mouse. Every
/// function returns after the server has processed the request.
class Screen {
public:
    /// Presses and releases a key (GDK_KEY_...) while the modifiers are held.
    void press(unsigned key, const std::vector<screen::KeySymbol>& modifiers = {});
    void type(const std::string& text);
    /// The server repeats a key that stays down.
    void keyDown(unsigned key);
    void keyUp(unsigned key);
    void click(int x, int y);
    /// Moves the pointer there and holds the button and the modifier down.
    void hold(int x, int y, unsigned button, unsigned modifier);
    void moveTo(int x, int y);
    void letGo(unsigned button, unsigned modifier);

    Color colorAt(int x, int y);
    /// Of every pixel in the area, line by line.
    std::vector<Color> colorsIn(int x, int y, int width, int height);
    int width() const { return connection.width(); }
    int height() const { return connection.height(); }
    /// Writes what is on the screen to a PNG file.
    void save(const std::string& path);

    /// Where the surface's upper left corner is on the screen.
    std::pair<int, int> origin(GdkSurface* surface);

    /// The size limits of the surface that window managers read.
    struct SizeLimits {
        int minimumWidth = 0;
        int minimumHeight = 0;
        int maximumWidth = 0; ///< 0: no limit
        int maximumHeight = 0;
    };
    SizeLimits sizeLimits(GdkSurface* surface);

    /// What desktops match the surface to its program's desktop entry by.
    std::string programName(GdkSurface* surface);

    /// The token that the surface was last presented with; empty without one.
    std::string activationToken(GdkSurface* surface);

    /// Widths of the pictures that window managers find on the surface as its icon.
    std::vector<int> iconSizes(GdkSurface* surface);

private:
    const screen::XConnection connection;
    const screen::Windows windows{connection};
    const screen::Keyboard keyboard{connection};
    const screen::Pointer pointer{connection};
};

} // namespace kelo::tests
