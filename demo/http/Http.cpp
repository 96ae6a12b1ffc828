#include "demo/http/Http.h"

#include <algorithm>

namespace kelo::demo {
namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool equalIgnoringCase(std::string_view left, std::string_view right) {
    const auto lower = [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
    };
    return std::ranges::equal(left, right, {}, lower, lower);
}

} // namespace

std::string_view Request::header(std::string_view name) const {
    const auto found =
        std::ranges::find(headers, name, [](const auto& header) { return header.first; });
    return found == headers.end() ? std::string_view() : found->second;
}

std::vector<std::string> Request::cookies(std::string_view name) const {
    std::vector<std::string> values;
    for (const auto& [headerName, headerValue] : headers) {
        std::string_view rest = headerName == "cookie" ? headerValue : std::string_view();
        while (!rest.empty()) {
            const auto end = std::min(rest.find(';'), rest.size());
            const auto pair = trimmed(rest.substr(0, end));
            const auto equals = pair.find('=');
            if (equals != std::string_view::npos && pair.substr(0, equals) == name)
                values.emplace_back(pair.substr(equals + 1));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    return values;
}

bool Request::hasContentType(std::string_view type) const {
    const auto value = header("content-type");
    return equalIgnoringCase(trimmed(value.substr(0, value.find(';'))), type);
}

} // namespace kelo::demo
