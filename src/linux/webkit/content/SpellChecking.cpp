#include "linux/webkit/content/SpellChecking.h"

#include "linux/webkit/content/UserLanguages.h"

#include <vector>

namespace kelo::webkit {

void checkSpelling(WebKitWebContext* context) {
    const auto languages = userLanguages();
    std::vector<const char*> names;
    for (const std::string& language : languages)
        names.push_back(language.c_str());
    names.push_back(nullptr);
    webkit_web_context_set_spell_checking_languages(context, names.data());
    // Without a language, the engine would take one of its own choice.
    webkit_web_context_set_spell_checking_enabled(context, names.size() > 1);
}

} // namespace kelo::webkit
