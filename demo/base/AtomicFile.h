#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kelo::demo {

/// Replaces a file atomically: readers see the old content or the new one, even if the writer is
/// interrupted. The file has its final permissions from the first byte on.
/// Throws ServiceError; the old file is then untouched.
void writeFileAtomically(const std::filesystem::path& path, std::string_view content, mode_t mode);

/// The content of a file; empty if there is no such file. Throws ServiceError if it cannot be read
/// or is larger than 16 MiB.
std::optional<std::string> readFileIfPresent(const std::filesystem::path& path);

} // namespace kelo::demo
