#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::updater {

/// The components of an entry's path, without "." and empty ones; an empty list is the archive's
/// root. Nothing if the path is absolute, contains "..", or is longer or deeper than any in our
/// packages.
std::optional<std::vector<std::string>> archivePath(std::string_view path);

/// Whether a symbolic link at this path leads to a place in the archive's top folder. ".." is
/// allowed only at the front of the target: the name before a later ".." could be a link itself.
bool staysInTree(const std::vector<std::string>& link, std::string_view target);

} // namespace kelo::updater
