#pragma once

#include <gtkmm/box.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/window.h>

#include <cstddef>
#include <string>

/// The texts of dialogs, which others may have written, and the row of their buttons. Main thread
/// only.
namespace kelo::gtk {

/// In characters. The toolkit's time for a long word grows with the square of its length: one of
/// 10,000 letters stops the program for ten seconds.
inline constexpr std::size_t longestDialogText = 2000;

/// In characters: the longest line.
inline constexpr int dialogTextWidth = 44;

/// Has a screen reader tell this text with the dialog.
void setAccessibleDescription(Gtk::Window& dialog, const std::string& text);

/// The row that the buttons of a dialog stand in.
Gtk::Box* makeButtonRow();

/// A label of balanced lines; text has at most as many characters.
Gtk::Label* makeDialogText(const std::string& text, const char* cssClass);

/// In pixels: about fifteen lines, which every screen has room for.
inline constexpr int tallestDialogText = 300;

/// Lets the user scroll a text that is taller than this, in pixels.
Gtk::ScrolledWindow* makeDialogScroll(Gtk::Widget& text, int tallest = tallestDialogText);

} // namespace kelo::gtk
