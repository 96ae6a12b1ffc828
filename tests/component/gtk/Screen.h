#pragma once

#include <cairomm/surface.h>

#include <gdk/gdk.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct _XDisplay;

namespace kelo::tests {

struct Color {
    int red = 0;
    int green = 0;
    int blue = 0;
    friend bool operator==(const Color&, const Color&) = default;
};

/// The display as its user has it: what is on the screen, and the keyboard and mouse before it. A
/// connection of its own, so that nothing passes through the toolkit under test.
class Screen {
public:
    Screen();

    /// Presses and releases a key (GDK_KEY_...) while the modifiers are held.
    void press(unsigned key, std::initializer_list<unsigned> modifiers = {});
    void type(const std::string& text); ///< lower case letters and digits
    void click(int x, int y);
    /// Moves the pointer there and holds the button and the modifier down.
    void hold(int x, int y, unsigned button, unsigned modifier);
    void moveTo(int x, int y);
    void letGo(unsigned button, unsigned modifier);

    Color colorAt(int x, int y);
    int width() const;
    int height() const;
    /// Writes what is on the screen to a PNG file.
    void save(const std::string& path);

    /// Where the surface's upper left corner is on the screen.
    std::pair<int, int> origin(GdkSurface* surface);

    /// Widths of the pictures that window managers find on the surface as its icon.
    std::vector<int> iconSizes(GdkSurface* surface);

private:
    struct Close {
        void operator()(_XDisplay* display) const;
    };
    void key(unsigned symbol, bool down);

    std::unique_ptr<_XDisplay, Close> display;
};

} // namespace kelo::tests
