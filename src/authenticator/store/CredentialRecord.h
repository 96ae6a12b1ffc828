#pragma once

#include "authenticator/keys/KeyStore.h"
#include "base/Bytes.h"

#include <chrono>
#include <string>

namespace kelo::authenticator {

/// A passkey as it is kept.
struct CredentialRecord {
    Bytes credentialId;
    std::string relyingPartyIdentifier;
    /// The service's name for the account, 1 to 64 bytes that mean nothing to anyone else.
    Bytes userId;
    /// The person's name for the account.
    std::string accountName;
    std::chrono::sys_seconds created;
    webauthn::PublicKey publicKey;
    Bytes wrappedPrivateKey;

    friend bool operator==(const CredentialRecord&, const CredentialRecord&) = default;
};

} // namespace kelo::authenticator
