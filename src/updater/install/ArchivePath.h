#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::updater {

/// The components of an entry's path. "." and doubled slashes are left out; the list is empty for
/// the archive's own root. Nothing when the path is absolute, has a "..", or is longer or deeper
/// than any that we pack.
std::optional<std::vector<std::string>> archivePath(std::string_view path);

/// Whether a symbolic link of that place in the tree stays in the archive's top folder. Its ".."
/// may only stand at the front: after a name, which can be a link itself, nobody knows where it
/// leads.
bool staysInTree(const std::vector<std::string>& link, std::string_view target);

} // namespace kelo::updater
