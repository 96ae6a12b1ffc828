#pragma once

namespace kelo::startup {

/// Makes the C library and all that is built on it speak the user's language: the toolkit's texts
/// and their direction, the texts of errors, the names of days and months. prepareProcess() calls
/// it, because it must run before the first thread.
///
/// - Numbers keep their point (LC_NUMERIC is "C"), and the streams of C++ stay as they are: what
///   this program writes is read by other programs.
/// - Text is UTF-8 where the environment names no locale, and where it names one that is not
///   installed. Such a name never ends the program: what is not installed stays in English.
void followUserLocale();

} // namespace kelo::startup
