#pragma once

#include "platform/Bundle.h"

#include <filesystem>
#include <optional>
#include <string_view>

namespace kelo::bundle {

/// A larger Info.plist is not read.
inline constexpr std::size_t longestInformationFile = 1024 * 1024;

/// An information dictionary in its XML or its binary form; nothing when the bytes are neither, or
/// when what they hold is no dictionary.
std::optional<platform::InformationDictionary> parseInformation(std::string_view bytes);

/// The same from a file; nothing when it cannot be read, is no regular file or is too long.
std::optional<platform::InformationDictionary>
readInformationFile(const std::filesystem::path& path);

/// The text under a key; nothing when it is absent or no text.
std::optional<std::string> informationText(const platform::InformationDictionary& information,
                                           std::string_view key);

} // namespace kelo::bundle
