#include "updater/appcast/PublicationDate.h"

#include "updater/appcast/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

namespace kelo::updater {

namespace {

using namespace std::chrono;

std::optional<int> number(std::string_view digits, std::size_t fewest, std::size_t most) {
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool whole = error == std::errc() && end == digits.data() + digits.size();
    if (!whole || digits.size() < fewest || digits.size() > most || digits.front() == '-')
        return std::nullopt;
    return value;
}

std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
    std::vector<std::string_view> parts;
    while (true) {
        const auto end = text.find_first_of(separators);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

std::vector<std::string_view> words(std::string_view text) {
    std::vector<std::string_view> found = split(text, blanks);
    std::erase(found, std::string_view());
    return found;
}

std::optional<year_month_day> date(std::string_view dayText, std::string_view monthText,
                                   std::string_view yearText) {
    static constexpr std::array<std::string_view, 12> months = {
        "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto dayNumber = number(dayText, 1, 2);
    const auto yearNumber = number(yearText, 4, 4);
    const auto found = std::find(months.begin(), months.end(), monthText);
    if (!dayNumber || !yearNumber || found == months.end())
        return std::nullopt;
    const year_month_day result(year(*yearNumber),
                                month(static_cast<unsigned>(found - months.begin()) + 1),
                                day(static_cast<unsigned>(*dayNumber)));
    return result.ok() ? std::optional(result) : std::nullopt;
}

std::optional<seconds> timeOfDay(std::string_view text) {
    const auto parts = split(text, ":");
    if (parts.size() < 2 || parts.size() > 3)
        return std::nullopt;
    const auto hour = number(parts[0], 1, 2);
    const auto minute = number(parts[1], 2, 2);
    const auto second = parts.size() == 3 ? number(parts[2], 2, 2) : 0;
    // The 60th second is a leap second.
    if (!hour || !minute || !second || *hour > 23 || *minute > 59 || *second > 60)
        return std::nullopt;
    return hours(*hour) + minutes(*minute) + seconds(*second);
}

std::optional<seconds> zoneOffset(std::string_view text) {
    if (text == "GMT" || text == "UT" || text == "UTC" || text == "Z")
        return seconds(0);
    if (text.size() != 5 || (text.front() != '+' && text.front() != '-'))
        return std::nullopt;
    const auto hour = number(text.substr(1, 2), 2, 2);
    const auto minute = number(text.substr(3, 2), 2, 2);
    if (!hour || !minute || *hour > 23 || *minute > 59)
        return std::nullopt;
    const seconds offset = hours(*hour) + minutes(*minute);
    return text.front() == '-' ? -offset : offset;
}

} // namespace

std::optional<sys_seconds> parsePublicationDate(std::string_view text) {
    std::vector<std::string_view> parts = words(text);
    if (!parts.empty() && parts.front().ends_with(','))
        parts.erase(parts.begin());
    if (parts.size() != 5)
        return std::nullopt;
    const auto calendarDate = date(parts[0], parts[1], parts[2]);
    const auto time = timeOfDay(parts[3]);
    const auto offset = zoneOffset(parts[4]);
    if (!calendarDate || !time || !offset)
        return std::nullopt;
    return sys_days(*calendarDate) + *time - *offset;
}

} // namespace kelo::updater
