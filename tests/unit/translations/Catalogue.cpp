#include "unit/translations/Catalogue.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace kelo::test {

namespace {

/// What stands between the first and the last quotation mark.
std::string quotedPart(const std::string& line) {
    const auto begin = line.find('"');
    const auto end = line.rfind('"');
    return begin == end ? "" : line.substr(begin + 1, end - begin - 1);
}

} // namespace

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::stringstream content;
    if (!stream || !(content << stream.rdbuf()))
        throw std::runtime_error("Cannot read " + file.string());
    return content.str();
}

std::vector<CatalogueEntry> readCatalogue(const std::filesystem::path& file) {
    std::istringstream lines(contentOf(file));
    std::vector<CatalogueEntry> entries;
    std::string* part = nullptr;
    bool isGuess = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("#,") && line.find("fuzzy") != std::string::npos)
            isGuess = true;
        if (line.starts_with("msgid_plural ")) {
            part = &entries.back().plural;
        } else if (line.starts_with("msgid ")) {
            entries.emplace_back().isGuess = isGuess;
            isGuess = false;
            part = &entries.back().text;
        } else if (line.starts_with("msgstr")) {
            part = &entries.back().translations.emplace_back();
        } else if (!line.starts_with('"')) {
            continue;
        }
        *part += quotedPart(line);
    }
    // The first one is the header.
    if (!entries.empty())
        entries.erase(entries.begin());
    return entries;
}

std::vector<std::string> readLanguages(const std::filesystem::path& file) {
    std::istringstream lines(contentOf(file));
    std::vector<std::string> names;
    for (std::string line; std::getline(lines, line);)
        if (!line.empty() && !line.starts_with('#'))
            names.push_back(line);
    return names;
}

} // namespace kelo::test
