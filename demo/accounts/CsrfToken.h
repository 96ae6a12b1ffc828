#pragma once

#include "base/Bytes.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::demo {

/// Double-submit protection: a page gets a token in its form, and the same token, authenticated, in
/// a cookie that no other site can read or send. A request is accepted only with both.
class CsrfToken {
public:
    CsrfToken();

    /// A new token.
    std::string make() const;

    /// The value of the cookie for a token. Its authentication code excludes planted cookies.
    std::string seal(std::string_view token) const;

    /// The token of the first authentic cookie; empty if there is none.
    std::optional<std::string> unseal(const std::vector<std::string>& cookies) const;

    /// Whether one of the cookies is authentic and holds the submitted token.
    bool matches(const std::vector<std::string>& cookies, std::string_view submitted) const;

private:
    Bytes key;
};

} // namespace kelo::demo
