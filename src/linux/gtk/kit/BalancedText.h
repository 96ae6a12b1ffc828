#pragma once

#include <gtkmm/label.h>

namespace kelo::gtk {

/// Wraps the label at words, and within one that is wider than the line. No hyphen shows where: in
/// a name or an address it would look like a part of it.
void wrapLines(Gtk::Label& label);

/// The same for a text at the start of its line, where it also stands if it runs the other way than
/// the window. It wraps only where there is no more room.
void wrapLinesAtStart(Gtk::Label& label);

/// Makes the lines of a label that wraps about equally long, so that no single word is left on the
/// last one. The label keeps its number of lines and must not be given another text afterwards
/// without another call.
void balanceLines(Gtk::Label& label, int widestInCharacters);

} // namespace kelo::gtk
