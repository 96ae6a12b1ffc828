#pragma once

#include "linux/command/CommandLine.h"

namespace kelo::command {

/// The action that shows a page. Its parameter is the address, as text.
inline constexpr const char* showPageAction = "show-page";

/// Has the program that is already running for this user do what the command line asks for: run the
/// actions by their names, show the page; without any of them, open its main window. Passes on that
/// the user's own start allows it to come to the front. False if no program runs, if it could not
/// do all of it, or if there is no session bus. Needs no display. Blocks for at most five seconds
/// for each.
bool askRunningProgram(const CommandLine& asked);

} // namespace kelo::command
