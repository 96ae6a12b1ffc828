#pragma once

#include "component/http/TestMainLoop.h"
#include "component/panel/FakeContent.h"
#include "linux/panel/DesktopPanels.h"
#include "testing/screen/Keyboard.h"
#include "testing/screen/OtherProgram.h"
#include "testing/screen/Picture.h"
#include "testing/screen/Pointer.h"
#include "testing/screen/Windows.h"
#include "testing/screen/XConnection.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kelo::test {

/// A panel as the voice widget asks for it.
platform::PanelDescription voicePanel();

/// The panel on a real X server under the window manager that KELO_WINDOW_MANAGER names, with a
/// real keyboard, pointer and screen.
class PanelFixture : public testing::Test {
protected:
    static void SetUpTestSuite();

    PanelFixture();

    /// The window manager's name; "none" without one.
    static std::string manager();
    static bool hasManager() { return manager() != "none"; }

    void until(const std::string& what, const std::function<bool()>& condition);
    /// Has the toolkit deal with all that the server has sent so far.
    static void digest();
    /// Shows the panel and waits until it is drawn and has the keyboard.
    void show();
    void hide();
    /// Waits until the program is on the screen and has the keyboard.
    void settle(screen::OtherProgram& program);
    /// Waits until it has it, and until the window manager knows: one that has yet to act on an
    /// earlier click would take it away again.
    void giveKeyboardTo(screen::OtherProgram& program);
    /// Types and waits until it has arrived at the program.
    void typeInto(screen::OtherProgram& program, const std::string& text);
    void typeIntoPanel(const std::string& text);

    screen::WindowId panelWindow() const;
    /// The panel's frame in pixels of the screen.
    struct Box {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
        friend bool operator==(const Box&, const Box&) = default;
    };
    Box box() const;
    /// Where the server has the panel's window, its shadow included.
    screen::Point corner() const { return windows.describe(panelWindow()).origin; }
    /// Shows the hidden panel. Returns the window's corner at the moment when the toolkit asks how
    /// large the window is to be, before it shows it itself; empty if it is not on the screen then.
    std::optional<screen::Point> showAndLookEarly();
    unsigned colorAt(int x, int y) const { return screen::colorAt(connection, x, y); }
    /// Whether the panel's content is visible there.
    bool contentAt(int x, int y) const { return colorAt(x, y) == FakeContent::color; }
    /// A picture of the screen for people, where KELO_PICTURES names a folder for it.
    void picture(const std::string& name) const;

    TestMainLoop loop;
    screen::XConnection connection;
    screen::Windows windows{connection};
    screen::Keyboard keyboard{connection};
    screen::Pointer pointer{connection};
    panel::DesktopPanels panels;
    std::shared_ptr<FakeContent> content;
    std::shared_ptr<platform::Panel> panel;
};

} // namespace kelo::test
