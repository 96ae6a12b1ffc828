#include "linux/webkit/content/SpellChecking.h"

#include <algorithm>
#include <string_view>

namespace kelo::webkit {

std::vector<std::string> spellingLanguages(const char* const* localeNames) {
    std::vector<std::string> languages;
    for (; *localeNames; ++localeNames) {
        const std::string_view whole = *localeNames;
        const std::string language(whole.substr(0, whole.find_first_of(".@")));
        // "de_DE" stands before the "de" that was made of it.
        const bool isKnown = std::ranges::any_of(languages, [&](const std::string& known) {
            return known == language || known.starts_with(language + "_");
        });
        if (!isKnown && !language.empty() && language != "C" && language != "POSIX")
            languages.push_back(language);
    }
    return languages;
}

void checkSpelling(WebKitWebContext* context) {
    const auto languages = spellingLanguages(g_get_language_names());
    std::vector<const char*> names;
    for (const std::string& language : languages)
        names.push_back(language.c_str());
    names.push_back(nullptr);
    webkit_web_context_set_spell_checking_languages(context, names.data());
    // Without a language, the engine would take one of its own choice.
    webkit_web_context_set_spell_checking_enabled(context, names.size() > 1);
}

} // namespace kelo::webkit
