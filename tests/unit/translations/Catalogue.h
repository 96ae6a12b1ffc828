#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::test {

/// One text of a catalogue, written as in the file: quotes and line ends stay escaped.
struct CatalogueEntry {
    std::string text;
    std::string plural;                    ///< empty for a text without one
    std::vector<std::string> translations; ///< one, or one for each form of the plural
    bool isGuess = false;                  ///< marked "fuzzy"

    /// All that names the entry.
    std::string key() const { return text + "|" + plural; }
};

/// The entries of a .po or .pot file without its header. Throws std::runtime_error for a file that
/// cannot be read.
std::vector<CatalogueEntry> readCatalogue(const std::filesystem::path& file);

/// The names after "#" are left out. Throws std::runtime_error for a file that cannot be read.
std::vector<std::string> readLanguages(const std::filesystem::path& file);

/// The whole file. Throws std::runtime_error if it cannot be read.
std::string contentOf(const std::filesystem::path& file);

/// The literals, joined and still escaped, with which code calls translated(), translatedCount()
/// and untranslated(). The second one of translatedCount() is left out.
std::vector<std::string> markedTexts(std::string_view code);

} // namespace kelo::test
