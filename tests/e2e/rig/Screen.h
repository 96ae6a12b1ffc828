#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

// Xlib's own names stay out of everybody else's file: it defines macros such as None and Bool.
struct _XDisplay;
struct _XImage;

namespace kelo::rig {

struct Point {
    int x = 0;
    int y = 0;
};

/// A window of the screen's list of programs' windows, as the window manager keeps it.
struct ScreenWindow {
    unsigned long identifier = 0;
    std::string title;
    pid_t process = 0;
    /// Upper left corner of the program's part, without the manager's frame.
    Point origin;
    int width = 0;
    int height = 0;
};

/// The X screen of this desktop: its windows, its keyboard and mouse, and pictures of it. The input
/// goes through the server (XTEST), so a program cannot tell it from a person's.
class Screen {
public:
    /// Throws std::runtime_error when DISPLAY cannot be opened or lacks XTEST.
    Screen();
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    bool hasWindowManager() const;
    /// In the order in which they were opened.
    std::vector<ScreenWindow> windows() const;
    std::optional<ScreenWindow> activeWindow() const;
    /// The windows as text, one a line.
    std::string picture() const;
    /// As a taskbar or a switcher does.
    void activate(const ScreenWindow& window) const;
    /// Puts it away, as the button in the window's frame does.
    void minimize(const ScreenWindow& window) const;
    /// As the close button in the window's frame does.
    void requestClose(const ScreenWindow& window) const;

    /// Whether the area shows anything at all: more than a single colour.
    bool isDrawn(Point corner, int width, int height) const;

    void click(Point point) const;
    /// Presses and releases one key by its name ("Return", "Escape", "F10"), with the modifiers
    /// ("Control_L") held.
    void press(const std::string& key, const std::vector<std::string>& modifiers = {}) const;
    /// Types a text of characters that the keyboard layout has.
    void type(const std::string& text) const;

    /// Writes the whole screen as PNG, once it has stood still for a moment (the tree is ahead of
    /// what is drawn) or a little later; makes the folder. Throws std::runtime_error on failure.
    void capture(const std::filesystem::path& file) const;

private:
    struct Closer {
        void operator()(_XDisplay* display) const;
    };
    std::vector<unsigned long> longs(unsigned long window, const char* property) const;
    std::string text(unsigned long window, const char* property) const;
    struct ImageDeleter {
        void operator()(_XImage* image) const;
    };
    std::unique_ptr<_XImage, ImageDeleter> read() const;
    std::unique_ptr<_XImage, ImageDeleter> readSettled() const;
    ScreenWindow describe(unsigned long window) const;
    void tellWindowManager(unsigned long window, const char* message) const;
    void strike(unsigned long keysym, bool down) const;
    void key(unsigned code, bool down) const;

    std::unique_ptr<_XDisplay, Closer> display;
};

} // namespace kelo::rig
