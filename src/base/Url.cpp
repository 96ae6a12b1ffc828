#include "base/Url.h"

#include "base/Utf8.h"

#include <algorithm>
#include <charconv>

namespace kelo {

namespace {

bool isSchemeCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '-' || c == '.';
}

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return result;
}

std::optional<std::uint16_t> defaultPort(std::string_view scheme) {
    if (scheme == "https" || scheme == "wss")
        return 443;
    if (scheme == "http" || scheme == "ws")
        return 80;
    return std::nullopt;
}

std::optional<int> hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return std::nullopt;
}

} // namespace

std::optional<Url> Url::parse(std::string_view text) {
    const bool clean = std::none_of(text.begin(), text.end(),
                                    [](unsigned char c) { return c <= 0x20 || c == 0x7f; });
    const auto separator = text.find("://");
    if (!clean || separator == std::string_view::npos || separator == 0 ||
        !std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(separator),
                     isSchemeCharacter))
        return std::nullopt;

    Url url;
    url.text = text;
    url.scheme_ = lowered(text.substr(0, separator));
    const std::string_view rest = text.substr(separator + 3);
    const auto authorityEnd = std::min(rest.find_first_of("/?#"), rest.size());
    std::string_view authority = rest.substr(0, authorityEnd);
    const std::string_view tail = rest.substr(authorityEnd);
    url.path_ = tail.substr(0, tail.find_first_of("?#"));

    if (const auto user = authority.rfind('@'); user != std::string_view::npos)
        authority.remove_prefix(user + 1);
    url.port_ = defaultPort(url.scheme_);
    const auto bracket = authority.rfind(']');
    const auto colon = authority.rfind(':');
    if (colon != std::string_view::npos && (bracket == std::string_view::npos || colon > bracket)) {
        const std::string_view digits = authority.substr(colon + 1);
        std::uint16_t port = 0;
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), port);
        if (error != std::errc() || end != digits.data() + digits.size())
            return std::nullopt;
        url.port_ = port;
        authority = authority.substr(0, colon);
    }
    if (authority.empty())
        return std::nullopt;
    url.host_ = authority;
    return url;
}

std::string Url::path() const {
    std::string decoded;
    for (std::size_t i = 0; i < path_.size(); ++i) {
        if (path_[i] == '%' && i + 2 < path_.size()) {
            const auto high = hexDigit(path_[i + 1]);
            const auto low = hexDigit(path_[i + 2]);
            if (high && low) {
                decoded += static_cast<char>(*high * 16 + *low);
                i += 2;
                continue;
            }
        }
        decoded += path_[i];
    }
    return isWellFormedUtf8(decoded) ? decoded : path_;
}

Url Url::appendingPathComponent(std::string_view component) const {
    Url result = *this;
    const std::string_view base = std::string_view(text).substr(0, text.find_first_of("?#"));
    result.text = base;
    while (component.starts_with('/'))
        component.remove_prefix(1);
    const std::string_view slash = result.text.ends_with('/') ? "" : "/";
    result.text += slash;
    result.text += component;
    result.path_ += slash;
    result.path_ += component;
    return result;
}

bool Url::hasSameOrigin(const Url& other) const {
    return scheme_ == other.scheme_ && lowered(host_) == lowered(other.host_) &&
           port_ == other.port_;
}

} // namespace kelo
