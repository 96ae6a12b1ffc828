#pragma once

#include "authenticator/SecretBytes.h"

#include <optional>

namespace kelo::authenticator {

/// Where the wrapping key of the software key store is kept. Both calls block, possibly for as long
/// as the user takes to unlock the place, and are made on a worker, one at a time. Failures are
/// PlatformErrors whose text tells the user what to do.
class WrappingKeySource {
public:
    virtual ~WrappingKeySource() = default;
    /// The 32-byte key, or nothing when none was ever kept here.
    virtual std::optional<SecretBytes> find() = 0;
    /// The key; the first time, a new random one that has been kept when this returns.
    virtual SecretBytes findOrCreate() = 0;
};

} // namespace kelo::authenticator
