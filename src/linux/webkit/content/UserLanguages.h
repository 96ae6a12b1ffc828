#pragma once

#include <webkit/webkit.h>

#include <string>
#include <vector>

namespace kelo::webkit {

/// The languages of these names, in their order and each once, as dictionaries are named: "de_DE".
/// The names are those of locales, as in LANGUAGE: "de_DE.UTF-8@euro", "nl", "C". "C" and "POSIX"
/// are no languages. The language of a country brings no other country's with it.
std::vector<std::string> languagesNamed(const char* const* localeNames);

/// The languages that the user reads, best first: those that the program's own texts are looked up
/// in. LANGUAGE counts before LC_ALL, LC_MESSAGES and LANG, but not where these ask for "C". Empty
/// if no language is named.
std::vector<std::string> userLanguages();

/// The same languages as pages and servers know them: "de-DE", and after the last country of a
/// language the language itself, since servers that have only "de" may not find it for "de-DE".
/// Without any language, "en-US", in which the program's own texts are then.
std::vector<std::string> pageLanguages(const std::vector<std::string>& languages);

/// Tells servers (Accept-Language) the languages of the user, and pages the first
/// (navigator.language).
void announceLanguages(WebKitWebContext* context);

} // namespace kelo::webkit
