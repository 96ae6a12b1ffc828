#include "demo/http/Template.h"

namespace kelo::demo {
namespace {

std::string escaped(std::string_view text) {
    std::string result;
    for (const char character : text) {
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        case '\'':
            result += "&#39;";
            break;
        default:
            result += character;
        }
    }
    return result;
}

} // namespace

std::string fillTemplate(std::string_view page, const Values& values) {
    std::string result;
    for (;;) {
        const auto start = page.find("{{");
        const auto end = page.find("}}", start);
        if (end == std::string_view::npos)
            return result.append(page);
        result += page.substr(0, start);
        const auto name = page.substr(start + 2, end - start - 2);
        if (name.starts_with('&'))
            result += values.at(std::string(name.substr(1)));
        else
            result += escaped(values.at(std::string(name)));
        page.remove_prefix(end + 2);
    }
}

} // namespace kelo::demo
