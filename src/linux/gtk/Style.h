#pragma once

namespace kelo::desktop {

/// Puts the program's style sheet and icons before the toolkit. Once a process, after the display
/// was opened.
void loadStyle();

} // namespace kelo::desktop
