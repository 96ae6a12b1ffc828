#pragma once

#include "authenticator/webauthn/CoseKey.h"
#include "base/Bytes.h"
#include "base/async/Task.h"

namespace kelo::authenticator {

struct CreatedKey {
    webauthn::PublicKey publicKey;
    /// The private key in a form that only the same key store on the same machine and account can
    /// use. Opaque to everyone else; kept with the credential.
    Bytes wrappedPrivateKey;
};

/// Makes ES256 keys that never leave it in the clear, and signs with them. Whatever blocks runs off
/// the main thread inside. Throws a Failure of kind storage whose text tells the user
/// what to do; after a failed create() nothing is left behind.
class KeyStore {
public:
    virtual ~KeyStore() = default;
    virtual Task<CreatedKey> create() = 0;
    /// The digest is 32 bytes (SHA-256); the signature is a DER Ecdsa-Sig-Value.
    virtual Task<Bytes> sign(Bytes wrappedPrivateKey, Bytes digest) = 0;
};

} // namespace kelo::authenticator
