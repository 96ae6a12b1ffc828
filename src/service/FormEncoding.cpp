#include "service/FormEncoding.h"

#include <string_view>

namespace kelo::service {

namespace {

bool staysAsItIs(char c) {
    constexpr std::string_view others = "-._~!$'()*,;:@/?";
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
           others.find(c) != std::string_view::npos;
}

std::string percentEncoded(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        if (staysAsItIs(c)) {
            result += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        result += '%';
        result += digits[byte >> 4];
        result += digits[byte & 15];
    }
    return result;
}

} // namespace

std::optional<std::string> formEncode(const FormFields& fields) {
    if (fields.empty())
        return std::nullopt;
    std::string query;
    for (const auto& [name, value] : fields) {
        if (!query.empty())
            query += '&';
        query += percentEncoded(name) + '=' + percentEncoded(value);
    }
    return query;
}

} // namespace kelo::service
