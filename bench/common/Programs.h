#pragma once

#include "testing/rig/ChildProcess.h"

#include <filesystem>
#include <map>
#include <string>

namespace kelo::bench {

/// The small browser that comes with the web engine. Throws std::runtime_error when there is none.
std::filesystem::path miniBrowser();

/// Variables by which a program keeps its files below the folder; makes the folder.
std::map<std::string, std::string> ownFolders(const std::filesystem::path& folder);

/// Ends it, and waits until everything it started is gone: the next start must find neither the
/// processes of this one nor their files in use.
void endWithTree(rig::ChildProcess& process);

} // namespace kelo::bench
