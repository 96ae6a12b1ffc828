#pragma once

#include <gtkmm/window.h>

#include <functional>
#include <string>

/// How every window of the program comes onto the screen and answers Escape. Main thread only.
namespace kelo::gtk {

/// The program's name for people: in window titles, in the main menu, in the desktop's lists.
inline constexpr const char* programName = "Kelo";

/// Gives the window the program's icon, for X11 window managers that show icons. Call it before the
/// window is realized.
void showProgramIcon(Gtk::Window& window);

/// Shows a window without taking the keyboard focus from the window in use. X11 window managers
/// respect this. Under Wayland the compositor decides; most give a new window the focus only if the
/// program already has it.
void showWithoutFocus(Gtk::Window& window);

/// Says that the user has just asked for something outside of the program's windows: in the tray,
/// on a notification, with another start. X11 window managers let a window come to the front only
/// if the user did nothing in another one since the request, so its time is kept for the next
/// window that is presented. Nothing happens under Wayland, where desktops send tokens.
void noteUserRequest();

/// Keeps an activation token for the next call of presentWithActivationToken(); replaces an unused
/// one. Desktops let a program raise its window only after a click of the user. For a click outside
/// of the program's windows, in the tray or on a notification, the desktop sends this token as
/// proof.
void keepActivationToken(std::string token);

/// Forgets this token if it is the kept one: the click that it came with is over.
void dropActivationToken(const std::string& token);

/// Presents the window and uses up the kept request and activation token, if there are any.
void presentWithActivationToken(Gtk::Window& window);

/// The same, but leaves the activation token to the window that is presented next.
void presentKeepingActivationToken(Gtk::Window& window);

/// Calls the function when Escape is pressed in the window and no widget has used the key. It
/// returns whether it has done something; otherwise, the toolkit goes on with the key.
void whenEscapeIsPressed(Gtk::Window& window, std::function<bool()> action);

} // namespace kelo::gtk
