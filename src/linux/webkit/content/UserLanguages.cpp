#include "linux/webkit/content/UserLanguages.h"

#include <algorithm>
#include <string_view>

namespace kelo::webkit {

namespace {

bool namesNoLanguage(std::string_view locale) {
    return locale.empty() || locale == "C" || locale == "POSIX";
}

std::string localeOfTexts() {
    for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (const char* const value = g_getenv(variable); value && *value)
            return value;
    return "";
}

std::string baseOf(const std::string& language) {
    return language.substr(0, language.find('_'));
}

} // namespace

std::vector<std::string> languagesNamed(const char* const* localeNames) {
    std::vector<std::string> languages;
    for (; *localeNames; ++localeNames) {
        const std::string_view whole = *localeNames;
        const std::string language(whole.substr(0, whole.find_first_of(".@")));
        // "de_DE" stands before the "de" that was made of it.
        const bool isKnown = std::ranges::any_of(languages, [&](const std::string& known) {
            return known == language || known.starts_with(language + "_");
        });
        if (!isKnown && !namesNoLanguage(language))
            languages.push_back(language);
    }
    return languages;
}

// GLib would read LANGUAGE under the locale "C" as well. The program's own texts do not.
std::vector<std::string> userLanguages() {
    if (namesNoLanguage(localeOfTexts()))
        return {};
    return languagesNamed(g_get_language_names());
}

std::vector<std::string> pageLanguages(const std::vector<std::string>& languages) {
    std::vector<std::string> tags;
    for (auto each = languages.begin(); each != languages.end(); ++each) {
        const std::string base = baseOf(*each);
        std::string tag = *each;
        std::ranges::replace(tag, '_', '-');
        tags.push_back(tag);
        const bool comesAgain = std::any_of(
            each + 1, languages.end(), [&](const auto& later) { return baseOf(later) == base; });
        if (!comesAgain && std::ranges::find(tags, base) == tags.end())
            tags.push_back(base);
    }
    if (tags.empty())
        tags.emplace_back("en-US");
    return tags;
}

void announceLanguages(WebKitWebContext* context) {
    const auto tags = pageLanguages(userLanguages());
    std::vector<const char*> names;
    for (const std::string& tag : tags)
        names.push_back(tag.c_str());
    names.push_back(nullptr);
    webkit_web_context_set_preferred_languages(context, names.data());
}

} // namespace kelo::webkit
