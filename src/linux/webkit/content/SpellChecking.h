#pragma once

#include <webkit/webkit.h>

#include <string>
#include <vector>

namespace kelo::webkit {

/// Underlines misspelt words in all views of the context, in the languages of the user. The
/// dictionaries are those that are installed for the desktop's other programs; a language without
/// one is left out.
void checkSpelling(WebKitWebContext* context);

/// The languages of these names, in their order and each once, as dictionaries are named: "de_DE".
/// The names are those of locales, as in LANGUAGE: "de_DE.UTF-8@euro", "nl", "C". "C" and "POSIX"
/// are no languages. The language of a country brings no other country's with it.
std::vector<std::string> spellingLanguages(const char* const* localeNames);

} // namespace kelo::webkit
