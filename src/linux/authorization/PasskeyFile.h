#pragma once

#include <filesystem>

namespace kelo::authorization {

/// The file with the passkeys, below $XDG_DATA_HOME (by default ~/.local/share).
std::filesystem::path passkeyFile();

} // namespace kelo::authorization
