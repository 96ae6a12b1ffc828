#pragma once

#include "authenticator/webauthn/AttestedCredentialData.h"
#include "base/Bytes.h"
#include "base/Failure.h"
#include "base/Translation.h"
#include "base/async/Task.h"

#include <string>
#include <utility>

namespace kelo::authenticator {

/// Where a private key is kept. The numbers are those of stored records.
enum class KeyKeeper {
    software = 0, ///< encrypted with a key that the user's keyring guards
    chip = 1,     ///< in the computer's security chip
};

struct CreatedKey {
    webauthn::PublicKey publicKey;
    /// The private key, encrypted. Only the key store that made it can use it, on the same machine
    /// and account. Stored with the credential.
    Bytes wrappedPrivateKey;
    KeyKeeper keeper = KeyKeeper::software;
};

/// Creates ES256 keys and signs with them. A private key never leaves the store unencrypted.
/// Blocking work runs on a worker. Throws a Failure of kind storage, cryptography or cancelled
/// whose text tells the user what to do. A failed create() leaves nothing behind.
class KeyStore {
public:
    virtual ~KeyStore() = default;
    virtual Task<CreatedKey> create() = 0;
    /// The digest has 32 bytes (SHA-256). The signature is a DER Ecdsa-Sig-Value.
    virtual Task<Bytes> sign(Bytes wrappedPrivateKey, Bytes digest) = 0;
};

/// The failure of a passkey request that the user or the program gave up.
inline Failure requestCancelled(std::string cause = {}) {
    return Failure(FailureKind::cancelled, translated("The passkey request was cancelled."),
                   std::move(cause));
}

} // namespace kelo::authenticator
