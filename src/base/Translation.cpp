#include "base/Translation.h"

#include <libintl.h>

#include <cstddef>
#include <span>
#include <vector>

namespace kelo {

namespace {

std::string filledIn(std::string_view text, std::span<const std::string_view> values) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool mayBeFilled = text[at] == '%' && at + 1 < text.size() && text[at + 1] > '0';
        const std::size_t number = mayBeFilled ? text[at + 1] - '1' : values.size();
        if (number < values.size()) {
            result += values[number];
            ++at;
        } else
            result += text[at];
    }
    return result;
}

} // namespace

std::string translated(const char* text) {
    return dgettext(translationDomain, text);
}

std::string translated(const char* text, std::initializer_list<std::string_view> values) {
    return filledIn(dgettext(translationDomain, text), {values.begin(), values.size()});
}

std::string translatedCount(const char* one, const char* many, unsigned long count) {
    return translatedCount(one, many, count, {});
}

std::string translatedCount(const char* one, const char* many, unsigned long count,
                            std::initializer_list<std::string_view> values) {
    const std::string number = std::to_string(count);
    std::vector<std::string_view> all{number};
    all.insert(all.end(), values);
    return filledIn(dngettext(translationDomain, one, many, count), all);
}

} // namespace kelo
