#pragma once

#include "authenticator/keys/WrappingKeySource.h"

namespace kelo::authorization {

/// Keeps the wrapping key in the user's keyring, through the Secret Service of the session bus. The
/// keyring asks the user itself to unlock it. Nothing is remembered between two calls, so that a
/// keyring that was locked, restarted or replaced is seen as it is.
class SecretServiceWrappingKeySource final : public authenticator::WrappingKeySource {
public:
    std::optional<authenticator::SecretBytes> find(std::stop_token stop) override;
    authenticator::SecretBytes findOrCreate(std::stop_token stop) override;
};

} // namespace kelo::authorization
