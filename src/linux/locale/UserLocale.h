#pragma once

#include <filesystem>

namespace kelo::locale {

/// Makes the C library and all that is built on it speak the user's language: the toolkit's texts
/// and their direction, the texts of errors, the names of days and months. Call it before the first
/// thread.
///
/// - Numbers keep their point (LC_NUMERIC is "C"), and the streams of C++ stay as they are: what
///   this program writes is read by other programs.
/// - Text is UTF-8 where the environment names no locale, and where it names one that is not
///   installed. Such a name never ends the program: what is not installed stays in English.
void followUserLocale();

/// Has the program's own texts (base/Translation.h) translated from the catalogues in
/// share/locale below this folder. Where there is none for the user's language, texts stay in
/// English. Without a locale, or with the locale "C", all do. Call it before the first thread.
/// prefix: where the program is installed, or its build tree (bundle/ProgramPlace.h).
void findTranslations(const std::filesystem::path& prefix);

} // namespace kelo::locale
