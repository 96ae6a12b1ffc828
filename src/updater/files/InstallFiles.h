#pragma once

#include "posix/FileDescriptor.h"

#include <string>
#include <vector>

/// Works with descriptors of folders rather than paths, so that nobody can exchange a part of a
/// path in between. Never follows links. Calls block.
namespace kelo::updater {

/// None if there is no such folder, if it is a link, or if it cannot be read.
posix::FileDescriptor openFolder(int parent, const std::string& name);

/// Opens the folder and makes it (0755) if it is missing. None on failure, with errno set.
posix::FileDescriptor makeFolder(int parent, const std::string& name);

/// The names in a folder, sorted, without "." and "..".
std::vector<std::string> namesIn(int folder);

/// The paths of all files and links below the folder, relative to it, sorted. At most this many.
std::vector<std::string> filesBelow(int folder, std::size_t most);

bool exists(int parent, const std::string& name);

/// Whether both descriptors refer to the same file or folder.
bool isSame(int one, int other);

/// Removes a file, or a folder with its content. True if it is missing; false if something could
/// not be removed.
bool removeTree(int parent, const std::string& name);

/// Syncs the folder and all folders below it; files must have been synced when they were written.
/// False on failure, with errno set.
bool syncFolders(int folder);

/// Copies a file with its permissions and syncs it. False on failure, with errno set.
bool copyFile(int from, const std::string& name, int to);

} // namespace kelo::updater
