#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace kelo::updater {

/// Makes the folder and those above it where they are missing, each 0700. False, with errno set,
/// when that cannot be done.
bool makePrivateFolders(const std::filesystem::path& folder);

/// Writes all of it at the descriptor's offset. False, with errno set, when the disk does not take
/// it.
bool writeAll(int descriptor, std::span<const char> bytes);

/// A line for the journal: what failed with which file, and errno's reason.
std::string failureLine(std::string_view what, const std::filesystem::path& file);

} // namespace kelo::updater
