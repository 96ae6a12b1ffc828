#pragma once

#include "authenticator/keys/SoftwareKeyStore.h"

namespace kelo::authorization {

/// Stores the wrapping key in the user's keyring, through the Secret Service on the session bus.
/// The keyring itself asks the user to unlock it. Nothing is cached between calls, because the
/// keyring may be locked, restarted or replaced at any time.
class SecretServiceWrappingKeySource final : public authenticator::WrappingKeySource {
public:
    std::optional<authenticator::SecretBytes> find(std::stop_token stop) override;
    authenticator::SecretBytes findOrCreate(std::stop_token stop) override;
};

} // namespace kelo::authorization
