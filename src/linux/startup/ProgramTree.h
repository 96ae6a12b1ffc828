#pragma once

namespace kelo::startup {

/// If an update of the tree that this program runs from was cut off halfway, gives this program the
/// rest of its tree back. To be called early in main, before anything of the tree is read. Looks
/// for one name and is done when there is none.
void repairProgramTree();

/// Removes what an update has left beside the tree, once the loop has run for some seconds: by then
/// this program has started, and the one before it is not needed any more. To be called when the
/// main loop is installed; a process that never runs it (for help, or to wake another) removes
/// nothing.
void confirmProgramTreeLater();

} // namespace kelo::startup
