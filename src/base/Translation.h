#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

/// The program's texts in the user's language. In the code they are in English, and stay so where
/// there is no translation. Any thread, once the process is prepared.
namespace kelo {

/// The catalogue of translations, by the name that gettext knows it under.
inline constexpr const char* translationDomain = "kelo";

/// text: a literal, so that it is found for the translators (scripts/translations), or a text from
/// untranslated(). Not empty.
std::string translated(const char* text);

/// The same, with the first value in place of "%1", the second in place of "%2", and so on to "%9".
/// Values are taken as they are: what looks like a placeholder in them stays.
std::string translated(const char* text, std::initializer_list<std::string_view> values);

/// The text for this many of something, with the number in place of "%1". one, many: literals, how
/// English says it.
std::string translatedCount(const char* one, const char* many, unsigned long count);

/// The same, with the first value in place of "%2", the second in place of "%3", and so on.
std::string translatedCount(const char* one, const char* many, unsigned long count,
                            std::initializer_list<std::string_view> values);

/// The text itself, marked for the translators: for tables that are made before the user's language
/// is known. Hand it to translated() where it is shown.
constexpr const char* untranslated(const char* text) {
    return text;
}

} // namespace kelo
