#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelo {

/// An absolute URL with a host, as RFC 3986 spells it. Kept as it was written; nothing is
/// normalised.
class Url {
public:
    /// Empty if the text is not scheme://host[:port][/path][?query][#fragment], or contains blanks
    /// or control characters.
    static std::optional<Url> parse(std::string_view text);

    const std::string& absoluteString() const { return text; }
    const std::string& scheme() const { return scheme_; }
    /// As written, without port; an IPv6 address keeps its brackets.
    const std::string& host() const { return host_; }
    /// As written, or the scheme's default (443, 80); empty for a scheme without one.
    std::optional<std::uint16_t> port() const { return port_; }
    /// Percent-decoded, without query and fragment; empty if there is none. A path that does not
    /// decode to well-formed UTF-8 is returned as written.
    std::string path() const;
    /// The path as written, percent signs and all.
    const std::string& encodedPath() const { return path_; }

    /// This URL with one more component (or several, with slashes between), and exactly one slash
    /// before it. Query and fragment are dropped.
    Url appendingPathComponent(std::string_view component) const;

    /// Same scheme, host and port.
    bool hasSameOrigin(const Url& other) const;

    friend bool operator==(const Url& left, const Url& right) { return left.text == right.text; }

private:
    Url() = default;

    std::string text;
    std::string scheme_;
    std::string host_;
    std::optional<std::uint16_t> port_;
    std::string path_;
};

} // namespace kelo
