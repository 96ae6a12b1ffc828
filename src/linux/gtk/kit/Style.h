#pragma once

namespace kelo::gtk {

/// Puts the program's style sheet and icons before the toolkit. Once a process, after the display
/// was opened.
void loadStyle();

} // namespace kelo::gtk
