#pragma once

#include "testing/rig/ChildProcess.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace kelo::bench {

/// Path of the small browser that comes with the web engine. Throws std::runtime_error if it is not
/// installed.
std::filesystem::path miniBrowser();

/// Path of an installed program; empty if there is none of that name.
std::optional<std::filesystem::path> installedProgram(const std::string& name);

/// Environment variables that make a program keep its files below the folder. Creates the folder.
std::map<std::string, std::string> ownFolders(const std::filesystem::path& folder);

/// Ends the program and waits until all its child processes have ended, so that neither they nor
/// their open files disturb the next start.
void endWithTree(rig::ChildProcess& process);

/// Without the rig's view of the accessibility tree: it would have the programs keep one. Throws
/// std::runtime_error if none comes.
void awaitWindowManager();

} // namespace kelo::bench
