#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kelo::demo {

/// Replaces a file in one step: whoever reads it, at whatever instant, and whatever interrupts the
/// writer, sees the old content or the new one. The permissions hold from the first byte on.
/// Throws ServiceError; the old file is then untouched.
void writeFileAtomically(const std::filesystem::path& path, std::string_view content, mode_t mode);

/// The content of a file; nothing when there is no such file. Throws ServiceError when there is one
/// that cannot be read or that is larger than 16 MiB.
std::optional<std::string> readFileIfPresent(const std::filesystem::path& path);

} // namespace kelo::demo
