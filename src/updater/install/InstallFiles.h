#pragma once

#include "posix/FileDescriptor.h"

#include <string>
#include <vector>

/// Files and folders by descriptors, so that no part of a path can come to mean something else on
/// the way. Links are never followed. Calls block.
namespace kelo::updater {

/// None when there is no such folder, when it is a link, or when it may not be read.
posix::FileDescriptor openFolder(int parent, const std::string& name);

/// Makes the folder (0755) where it is missing. None on failure, with errno.
posix::FileDescriptor makeFolder(int parent, const std::string& name);

/// The names in a folder, sorted, without "." and "..".
std::vector<std::string> namesIn(int folder);

/// The paths of all files and links below the folder, relative to it, sorted. Stops after the
/// number given.
std::vector<std::string> filesBelow(int folder, std::size_t most);

bool exists(int parent, const std::string& name);

/// Whether both are the same file or folder on the disk.
bool isSame(int one, int other);

/// Removes a file, or a folder with all that is in it; what is missing is fine. False when
/// something could not be removed.
bool removeTree(int parent, const std::string& name);

/// Brings the folder and all below it to the disk. Files were synced when they were written. False
/// on failure, with errno.
bool syncFolders(int folder);

/// Writes a copy of a file to the disk, permissions included. False on failure, with errno.
bool copyFile(int from, const std::string& name, int to);

} // namespace kelo::updater
