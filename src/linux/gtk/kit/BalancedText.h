#pragma once

#include <gtkmm/label.h>

namespace kelo::gtk {

/// Makes the lines of a label that wraps about equally long, so that no single word is left on the
/// last one. The label keeps its number of lines and must not be given another text afterwards
/// without another call.
void balanceLines(Gtk::Label& label, int widestInCharacters);

} // namespace kelo::gtk
