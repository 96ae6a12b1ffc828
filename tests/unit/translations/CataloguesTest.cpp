#include "unit/translations/Catalogue.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

namespace kelo::test {

namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::Not;

const fs::path source = KELO_SOURCE_FOLDER;

std::vector<CatalogueEntry> templateEntries() {
    return readCatalogue(source / "po/kelo.pot");
}

/// The catalogue of each language.
class Catalogue : public testing::TestWithParam<std::string> {
protected:
    const std::vector<CatalogueEntry> entries = readCatalogue(source / "po" / (GetParam() + ".po"));
};

std::vector<std::string> keysOf(const std::vector<CatalogueEntry>& entries) {
    std::vector<std::string> keys;
    for (const auto& entry : entries)
        keys.push_back(entry.key());
    return keys;
}

std::set<char> placeholdersOf(const std::string& text) {
    std::set<char> found;
    for (auto at = text.find('%'); at != std::string::npos; at = text.find('%', at + 1))
        if (at + 1 < text.size() && text[at + 1] >= '1' && text[at + 1] <= '9')
            found.insert(text[at + 1]);
    return found;
}

/// The mark at its end: an ellipsis, a period, a question mark or nothing.
std::string endOf(const std::string& text) {
    for (const std::string mark : {"…", ".", "?"})
        if (text.ends_with(mark))
            return mark;
    return "";
}

long mnemonicsIn(const std::string& text) {
    return std::count(text.begin(), text.end(), '_');
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Of, Catalogue, testing::ValuesIn(readLanguages(source / "po/LINGUAS")),
                         [](const auto& tested) { return tested.param; });

TEST_P(Catalogue, HasExactlyTheTextsOfTheTemplate) {
    EXPECT_EQ(keysOf(entries), keysOf(templateEntries()));
}

TEST_P(Catalogue, TranslatesEveryText) {
    for (const auto& entry : entries) {
        EXPECT_EQ(entry.translations.size(), entry.plural.empty() ? 1U : 2U) << entry.text;
        EXPECT_THAT(entry.translations, Not(Contains(""))) << entry.text;
    }
}

TEST_P(Catalogue, HoldsNoGuesses) {
    for (const auto& entry : entries)
        EXPECT_FALSE(entry.isGuess) << entry.text;
}

// For one thing, a text may do without the number. The forms of a plural are in the order of the
// numbers that they are for, and the first one is for one thing in each of our languages.
TEST_P(Catalogue, NamesTheSameValuesAsTheEnglishText) {
    for (const auto& entry : entries) {
        const auto& english = entry.plural.empty() ? entry.text : entry.plural;
        EXPECT_EQ(placeholdersOf(entry.translations.back()), placeholdersOf(english))
            << entry.translations.back();
        EXPECT_EQ(placeholdersOf(entry.translations.front()), placeholdersOf(entry.text))
            << entry.translations.front();
    }
}

TEST_P(Catalogue, EndsItsTextsAsTheEnglishOnesEnd) {
    for (const auto& entry : entries)
        for (const auto& translation : entry.translations)
            EXPECT_EQ(endOf(translation), endOf(entry.text)) << translation;
}

TEST_P(Catalogue, HasAMnemonicWhereTheEnglishTextHasOne) {
    for (const auto& entry : entries)
        for (const auto& translation : entry.translations)
            EXPECT_EQ(mnemonicsIn(translation), mnemonicsIn(entry.text)) << translation;
}

// Some texts are shown as Pango markup, with the values already escaped.
TEST_P(Catalogue, HoldsNoMarkup) {
    for (const auto& entry : entries)
        for (const auto& translation : entry.translations)
            EXPECT_EQ(translation.find_first_of("<>&"), std::string::npos) << translation;
}

TEST_P(Catalogue, NamesItsOwnLanguageForPages) {
    const auto code = std::ranges::find(entries, "en", &CatalogueEntry::text);
    ASSERT_NE(code, entries.end());
    EXPECT_EQ(code->translations.front(), GetParam());
}

TEST(Languages, AreThoseOfTheCataloguesAndOfTheDesktopEntry) {
    const auto languages = readLanguages(source / "po/LINGUAS");
    std::vector<std::string> catalogues;
    for (const auto& file : fs::directory_iterator(source / "po"))
        if (file.path().extension() == ".po")
            catalogues.push_back(file.path().stem());
    EXPECT_THAT(catalogues, testing::UnorderedElementsAreArray(languages));
    const std::string entry = contentOf(source / "data/app.kelo.Kelo.desktop");
    std::vector<std::string> described;
    const std::string key = "\nComment[";
    for (auto at = entry.find(key); at != std::string::npos; at = entry.find(key, at + 1)) {
        const auto begin = at + key.size();
        described.push_back(entry.substr(begin, entry.find(']', begin) - begin));
    }
    EXPECT_THAT(described, testing::UnorderedElementsAreArray(languages));
}

// Everyone reads these in the same words, whatever the language of the desktop.
TEST(TranslationTemplate, LeavesOutTheTextsThatAreTheSameEverywhere) {
    const auto keys = keysOf(templateEntries());
    for (const std::string text :
         {"Open Kelo",
          "Check for Updates…",
          "Settings…",
          "Quit Kelo",
          "Backend",
          "Version",
          "Sign in with passkey",
          "Waiting for passkey…",
          "Register a Passkey on This Mac…",
          "Passkey",
          "Passkey registered.",
          "Passkey registered on this Mac.",
          "Bevestig registratie",
          "Registreer",
          "Annuleer",
          "Wachtwoord of MFA-code",
          "Vul je wachtwoord óf een MFA-code in om deze passkey te registreren.",
          "Log in first, then register a passkey.",
          "Passkey was not accepted.",
          "Signed in but no session was returned.",
          "Could not start passkey login.",
          "Could not start passkey registration.",
          "Bad registration options.",
          "No attestation object from authenticator.",
          "No CSRF token",
          "Not signed in (could not get CSRF token).",
          "No response",
          "Kelo"})
        EXPECT_THAT(keys, Not(Contains(text + "|")));
}

TEST(TranslationTemplate, HasEveryTextThatTheCodeMarks) {
    std::vector<std::string> marked;
    for (const auto& file : fs::recursive_directory_iterator(source / "src")) {
        const auto name = file.path().filename().string();
        if (!file.is_regular_file() || name.starts_with("Translation."))
            continue;
        for (auto& text : markedTexts(contentOf(file.path())))
            marked.push_back(std::move(text));
    }
    std::vector<std::string> known;
    for (const auto& entry : templateEntries())
        known.push_back(entry.text);
    std::ranges::sort(marked);
    marked.erase(std::unique(marked.begin(), marked.end()), marked.end());
    EXPECT_GT(marked.size(), 200U);
    EXPECT_THAT(known, testing::UnorderedElementsAreArray(marked));
}

} // namespace kelo::test
