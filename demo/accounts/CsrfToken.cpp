#include "demo/accounts/CsrfToken.h"

#include "base/Base64.h"
#include "demo/base/Digest.h"
#include "demo/base/Random.h"

#include <algorithm>

namespace kelo::demo {

CsrfToken::CsrfToken() : key(randomBytes(32)) {}

std::string CsrfToken::make() const {
    return randomToken();
}

std::string CsrfToken::seal(std::string_view token) const {
    return std::string(token) + "." + base64URLEncode(hmacSha256(key, token));
}

std::optional<std::string> CsrfToken::unseal(const std::vector<std::string>& cookies) const {
    for (const auto& cookie : cookies) {
        const auto token = cookie.substr(0, cookie.find('.'));
        if (equalInConstantTime(seal(token), cookie))
            return token;
    }
    return std::nullopt;
}

bool CsrfToken::matches(const std::vector<std::string>& cookies, std::string_view submitted) const {
    return std::any_of(cookies.begin(), cookies.end(), [&](const std::string& cookie) {
        return equalInConstantTime(seal(submitted), cookie);
    });
}

} // namespace kelo::demo
