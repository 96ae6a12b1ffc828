#pragma once

#include "updater/error/UpdateError.h"

#include <filesystem>
#include <string>

namespace kelo::updater {

/// The archive contains something forbidden, or lacks something required.
UpdateError unfitArchive(std::string cause);

/// Unpacking failed with this errno.
UpdateError unpackFailure(int error, std::string cause);

/// A system call on something in or beside the installed folder failed with this errno.
UpdateError installFailure(int error, const std::filesystem::path& folder, std::string cause);

/// The installed folder is not the one any more that the update was prepared for.
UpdateError folderChanged(const std::filesystem::path& folder);

/// The installed folder contains a file that is not part of the program.
UpdateError folderHoldsOtherFiles(const std::filesystem::path& folder, const std::string& file);

} // namespace kelo::updater
