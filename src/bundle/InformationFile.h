#pragma once

#include "platform/Bundle.h"

#include <filesystem>
#include <optional>
#include <string_view>

namespace kelo::bundle {

/// Longest Info.plist that is read, in bytes.
inline constexpr std::size_t longestInformationFile = 1024 * 1024;

/// Parses an information dictionary in XML or binary form. Nothing if the bytes are neither, or not
/// a dictionary. The binary form may hold text that is not UTF-8, which no window can show: a key
/// like that is left out, and a value counts as one of no kind that the program uses.
std::optional<platform::InformationDictionary> parseInformation(std::string_view bytes);

/// The same from a file. Nothing also if it cannot be read, is not a regular file or is too long.
std::optional<platform::InformationDictionary>
readInformationFile(const std::filesystem::path& path);

} // namespace kelo::bundle
