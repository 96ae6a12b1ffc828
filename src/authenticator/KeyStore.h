#pragma once

#include "platform/Bytes.h"
#include "platform/Task.h"

#include <array>

namespace kelo::authenticator {

/// A P-256 point: both coordinates big-endian, padded to 32 bytes.
struct PublicKey {
    std::array<std::uint8_t, 32> x{};
    std::array<std::uint8_t, 32> y{};
    friend bool operator==(const PublicKey&, const PublicKey&) = default;
};

struct CreatedKey {
    PublicKey publicKey;
    /// The private key in a form that only the same key store on the same machine and account can
    /// use. Opaque to everyone else; kept with the credential.
    platform::Bytes wrappedPrivateKey;
};

/// Makes ES256 keys that never leave it in the clear, and signs with them. Whatever blocks runs off
/// the main thread inside. Failures are PlatformErrors of kind storage whose text tells the user
/// what to do; after a failed create() nothing is left behind.
class KeyStore {
public:
    virtual ~KeyStore() = default;
    virtual platform::Task<CreatedKey> create() = 0;
    /// The digest is 32 bytes (SHA-256); the signature is a DER Ecdsa-Sig-Value.
    virtual platform::Task<platform::Bytes> sign(platform::Bytes wrappedPrivateKey,
                                                 platform::Bytes digest) = 0;
};

} // namespace kelo::authenticator
