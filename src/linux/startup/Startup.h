#pragma once

namespace kelo::startup {

/// Prepares this process. Call it first in main(), before any thread and before GTK starts, because
/// it sets environment variables.
///
/// - Removes environment variables that open the program to others (UnsafeVariables.h).
/// - Keeps the security chip's library from printing (OwnVariables.h).
/// - Follows the user's locale, with translations from where this program is installed
///   (UserLocale.h).
/// - Limits the memory that the allocator keeps.
/// - If an update of the tree that this program runs from was interrupted, moves the missing pieces
///   back, before anything in the tree is read.
/// - Chooses the renderer (RendererChoice.h).
/// - Works around web views that stay blank with NVIDIA's own kernel driver.
void prepareProcess();

/// Once the main loop has run for ten seconds, removes what an update has left beside the tree:
/// this program has started by then, so the version before it is not needed any more. Call it when
/// the main loop is installed. A process that never runs the loop (for --help, or to activate a
/// running one) removes nothing.
void removeFormerVersionLater();

} // namespace kelo::startup
