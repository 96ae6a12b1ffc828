#pragma once

#include "authenticator/keys/SecretBytes.h"

#include <optional>
#include <stop_token>

namespace kelo::authenticator {

/// Where the wrapping key of the software key store is kept. Both calls block, possibly for as long
/// as the user takes to unlock the place, and are made on a worker, one at a time; a stop ends them
/// early, with an error of kind cancelled. Throws a Failure whose text tells the user
/// what to do.
class WrappingKeySource {
public:
    virtual ~WrappingKeySource() = default;
    /// The 32-byte key, or nothing when none was ever kept here.
    virtual std::optional<SecretBytes> find(std::stop_token stop) = 0;
    /// The key; the first time, a new random one that has been kept when this returns.
    virtual SecretBytes findOrCreate(std::stop_token stop) = 0;
};

} // namespace kelo::authenticator
