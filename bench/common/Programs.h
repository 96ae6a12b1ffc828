#pragma once

#include "testing/rig/ChildProcess.h"

#include <filesystem>
#include <map>
#include <string>

namespace kelo::bench {

/// Path of the small browser that comes with the web engine. Throws std::runtime_error if it is not
/// installed.
std::filesystem::path miniBrowser();

/// Environment variables that make a program keep its files below the folder. Creates the folder.
std::map<std::string, std::string> ownFolders(const std::filesystem::path& folder);

/// Ends the program and waits until all its child processes have ended, so that neither they nor
/// their open files disturb the next start.
void endWithTree(rig::ChildProcess& process);

} // namespace kelo::bench
