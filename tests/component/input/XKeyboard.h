#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

struct _XDisplay;

namespace kelo::tests {

/// The keyboard, and another program's window, as the X server has them: a connection of its own,
/// so that nothing passes through what is under test.
class XKeyboard {
public:
    XKeyboard();
    /// Releases all keys that are down.
    ~XKeyboard();

    /// By its symbol (XK_...) on the layout of the moment, or by its code.
    void down(unsigned symbol) { key(codeOf(symbol), true); }
    void up(unsigned symbol) { key(codeOf(symbol), false); }
    void tap(unsigned symbol);
    void key(unsigned code, bool down);
    unsigned codeOf(unsigned symbol);

    void setStickyKeys(bool on);
    void moveTo(int x, int y);
    /// On the screen, in pixels.
    std::pair<int, int> centreOf(unsigned long window);
    /// Of the mouse; the wheel's are 4 and 5.
    void click(unsigned button);
    /// As a program does that keeps the keyboard to itself.
    void grab();
    void ungrab();
    void lockGroup(int group);

    /// Shows a window that is not ours, and gives it the keyboard.
    void focusOther();
    /// Gives a window the keyboard, by the window manager if there is one.
    void focus(unsigned long window);
    /// Gives it the keyboard past any window manager.
    void forceFocus(unsigned long window);
    void focusNothing();
    /// Returns once the window manager, if any, has dealt with all that happened so far.
    void settleManager();
    static bool hasManager();
    unsigned long focused();
    /// How many key presses the other program's window has received.
    int pressesInOther();

    unsigned long otherWindow() const { return other; }

private:
    struct Close {
        void operator()(_XDisplay* display) const;
    };
    std::unique_ptr<_XDisplay, Close> display;
    unsigned long other = 0;
    int presses = 0;
};

/// Runs a program to its end; whether it succeeded.
bool run(const std::string& command);

} // namespace kelo::tests
