#pragma once

#include "base/Bytes.h"

#include <string_view>

namespace kelo::demo {

/// What is kept of a password: a salted scrypt digest, slow to guess from. Making and matching one
/// takes some tens of milliseconds.
class PasswordHash {
public:
    explicit PasswordHash(std::string_view password);

    bool matches(std::string_view password) const;

private:
    Bytes salt;
    Bytes digest;
};

} // namespace kelo::demo
