#pragma once

#include "base/Clock.h"
#include "base/async/Spawn.h"
#include "component/gtk/FakeApp.h"
#include "component/gtk/Screen.h"
#include "linux/gobject/GLibMainLoop.h"
#include "linux/gtk/application/GtkApplicationHost.h"

#include <gtkmm/button.h>
#include <gtkmm/label.h>
#include <gtkmm/window.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::tests {

/// The desktop side of the program with a fake app, on a real display.
class RunningProgram {
public:
    explicit RunningProgram(gtk::HostSettings settings = {});
    ~RunningProgram();

    /// Starts the program, runs the body inside its main loop once the main window has appeared,
    /// and terminates it.
    void run(std::function<void()> body);
    /// The same, but the body must make the program end.
    void runToItsOwnEnd(std::function<void()> body);

    /// Runs the main loop until the condition holds. Fails and throws after a generous deadline.
    static void until(const std::string& what, const std::function<bool()>& condition);
    /// Runs the main loop until all posted jobs, drawings and requests to the display are done.
    static void settle();

    std::vector<Gtk::Window*> windowsOnScreen();
    /// The one window on the screen with the title; waits for it.
    Gtk::Window& window(const std::string& title);
    /// Waits until it has the keyboard.
    void untilActive(Gtk::Window& window);
    /// Waits until the window is drawn with the size it has now.
    void untilDrawn(Gtk::Window& window);

    /// Where the widget is on the screen, in pixels.
    struct Box {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
        friend bool operator==(const Box&, const Box&) = default;
    };
    Box boxOf(Gtk::Widget& widget);
    void click(Gtk::Widget& widget); ///< in its middle, once it rests

    bool inBody(const std::function<void()>& body);

    gobject::GLibMainLoop mainLoop;
    MainLoop::Installation installation{mainLoop};
    FakeApp app;
    gtk::GtkApplicationHost host;
    Screen screen;
    int status = -1;
};

/// A clock on which an hour passes between any two looks, so that no time has to be waited for.
SteadyNow hurryingClock();

/// The root and all its descendants, visible or not, in drawing order.
std::vector<Gtk::Widget*> widgetsIn(Gtk::Widget& root);

template <typename Kind>
std::vector<Kind*> visibleIn(Gtk::Widget& root) {
    std::vector<Kind*> found;
    for (auto* widget : widgetsIn(root))
        if (auto* kind = dynamic_cast<Kind*>(widget); kind && kind->get_mapped())
            found.push_back(kind);
    return found;
}

/// The texts of all visible labels, in drawing order.
std::vector<std::string> textsIn(Gtk::Widget& root);

/// The visible label with the text; null if there is none.
Gtk::Label* labelSaying(Gtk::Widget& root, const std::string& text);

/// Whether the text of one word in wide letters has more than one line, and nothing but its
/// letters: the toolkit puts a hyphen where it breaks a word, which nobody wrote.
bool isBrokenWithoutHyphen(Gtk::Label& label);

/// The visible button with the accessible name; null if there is none.
Gtk::Button* buttonNamed(Gtk::Widget& root, const std::string& name);

/// Whether the widget has this accessible name.
bool isNamed(Gtk::Widget& widget, const std::string& name);

/// Whether it also tells this text of the widget.
bool isDescribed(Gtk::Widget& widget, const std::string& text);

/// A visible widget with the style class; null if there is none.
Gtk::Widget* withClass(Gtk::Widget& root, const std::string& cssClass);

} // namespace kelo::tests
