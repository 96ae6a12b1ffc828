#pragma once

#include "base/Bytes.h"

#include <string_view>

namespace kelo::demo {

/// A salted scrypt digest of a password. Creating and checking one takes some tens of milliseconds,
/// which makes guessing slow.
class PasswordHash {
public:
    explicit PasswordHash(std::string_view password);

    bool matches(std::string_view password) const;

private:
    Bytes salt;
    Bytes digest;
};

} // namespace kelo::demo
