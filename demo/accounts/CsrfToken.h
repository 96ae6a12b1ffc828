#pragma once

#include "base/Bytes.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::demo {

/// Double submission: a page gets a token in its form and the same token, sealed, in a cookie that
/// no other site can read or send along. A request counts only if both arrive and belong together.
class CsrfToken {
public:
    CsrfToken();

    /// A new token.
    std::string make() const;

    /// What the cookie for a token holds. The seal keeps out cookies that someone planted.
    std::string seal(std::string_view token) const;

    /// The token of the first cookie whose seal is ours; nothing when none is.
    std::optional<std::string> unseal(const std::vector<std::string>& cookies) const;

    /// Whether one of the cookies is ours and holds the submitted token.
    bool matches(const std::vector<std::string>& cookies, std::string_view submitted) const;

private:
    Bytes key;
};

} // namespace kelo::demo
