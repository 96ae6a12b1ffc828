#include "linux/locale/UserLocale.h"

#include "base/Translation.h"

#include <libintl.h>

#include <clocale>
#include <string_view>

namespace kelo::locale {

void followUserLocale() {
    // One by one: setlocale() with LC_ALL does nothing at all if a single category names a locale
    // that is not installed.
    for (const int category : {LC_CTYPE, LC_COLLATE, LC_MONETARY, LC_MESSAGES, LC_TIME, LC_PAPER,
                               LC_NAME, LC_ADDRESS, LC_TELEPHONE, LC_MEASUREMENT})
        std::setlocale(category, "");
    // In the locale "C", texts lose every character that ASCII lacks.
    const std::string_view characters(std::setlocale(LC_CTYPE, nullptr));
    if (characters == "C" || characters == "POSIX")
        std::setlocale(LC_CTYPE, "C.UTF-8");
}

void findTranslations(const std::filesystem::path& prefix) {
    bindtextdomain(translationDomain, (prefix / "share" / "locale").c_str());
    // Otherwise they would come in the characters of the locale, which may be older than UTF-8.
    bind_textdomain_codeset(translationDomain, "UTF-8");
}

} // namespace kelo::locale
