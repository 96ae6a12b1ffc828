#pragma once

#include "component/input/XKeyboard.h"
#include "linux/input/KeyboardMonitors.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelo::tests {

/// One change of the modifiers, as a monitor received it.
struct Seen {
    bool global = false;
    platform::ModifierFlags flags = 0;
    friend bool operator==(const Seen&, const Seen&) = default;
};
void PrintTo(const Seen& seen, std::ostream* out);

using Flags = platform::ModifierFlags;
inline constexpr Flags shift = platform::modifier::shift;
inline constexpr Flags control = platform::modifier::control;
inline constexpr Flags option = platform::modifier::option;
inline constexpr Flags command = platform::modifier::command;
inline constexpr Flags capsLock = platform::modifier::capsLock;

/// Runs the main loop until the condition holds; fails the test after a deadline.
void until(const std::string& what, const std::function<bool()>& condition);

/// A window of this program; the destructor closes it.
class OwnWindow {
public:
    /// Shown when this returns; past the window manager if wanted.
    explicit OwnWindow(bool overrideRedirect = false);
    ~OwnWindow();
    OwnWindow(const OwnWindow&) = delete;
    OwnWindow& operator=(const OwnWindow&) = delete;

    GtkWindow* window() const { return GTK_WINDOW(window_); }
    unsigned long identifier() const;
    bool isActive() const { return gtk_window_is_active(window()); }

private:
    GtkWidget* window_;
};

/// The real monitors and a real keyboard, with one global and one local monitor for modifiers.
class InputFixture : public testing::Test {
protected:
    InputFixture();
    ~InputFixture() override;

    void watch();
    /// Another program gets the keyboard.
    void focusOther();
    /// A window of ours gets it.
    void focusOurs(const OwnWindow& window);
    /// What was seen since the last call, once all that was pressed so far has been dealt with.
    /// Nothing may be held.
    std::vector<Seen> seen();
    /// The same, in the middle of a press: waits until so many changes were seen.
    std::vector<Seen> seenSoFar(std::size_t count);

    XKeyboard keyboard;
    input::KeyboardMonitors monitors;
    std::vector<Seen> log;
};

} // namespace kelo::tests
