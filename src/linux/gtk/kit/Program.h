#pragma once

namespace kelo::gtk {

/// The program's name as people read it: window titles, the main menu, the desktop's own lists.
inline constexpr const char* programName = "Kelo";

} // namespace kelo::gtk
