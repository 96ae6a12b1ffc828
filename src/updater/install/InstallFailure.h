#pragma once

#include "updater/error/UpdateError.h"

#include <filesystem>
#include <string>

namespace kelo::updater {

/// The update's archive holds what it must not, or lacks what it must have.
UpdateError unfitArchive(std::string cause);

/// The update could not be unpacked: a call of the system failed with that error number.
UpdateError unpackFailure(int error, std::string cause);

/// A call of the system failed with that error number, of something in or beside the folder.
UpdateError installFailure(int error, const std::filesystem::path& folder, std::string cause);

/// The installed folder is no longer the one that the update was prepared for.
UpdateError folderChanged(const std::filesystem::path& folder);

/// The installed folder holds what did not come with the program.
UpdateError folderHoldsOtherFiles(const std::filesystem::path& folder, const std::string& file);

} // namespace kelo::updater
