#pragma once

#include "base/Bytes.h"
#include "demo/passkeys/PasskeyMessages.h"
#include "demo/passkeys/PasskeyRefused.h"
#include "demo/passkeys/PasskeyStore.h"

#include <cstdint>
#include <string>

namespace kelo::demo {

/// Checks what authenticators send, by libfido2: a verifier that shares no code with any
/// authenticator of ours. Throws PasskeyRefused. Whether a challenge is still good is the caller's.
class PasskeyVerifier {
public:
    /// The relying party is a bare host; the origin https://host or https://host:port.
    PasskeyVerifier(std::string relyingParty, std::string origin);

    /// A new passkey: made for this relying party and this challenge, user present and verified, an
    /// ES256 key on its curve, attestation "none". Owner, label and date are left for the caller.
    Passkey verifyRegistration(const AttestationMessage& message, ByteView challenge) const;

    /// A signature by this passkey over this challenge; returns the counter to keep.
    std::uint32_t verifyAssertion(const AssertionMessage& message, ByteView challenge,
                                  const Passkey& passkey) const;

private:
    void checkClientData(ByteView bytes, const char* type, ByteView challenge) const;
    void checkAuthenticatorData(ByteView bytes) const;

    std::string relyingParty;
    std::string origin;
};

} // namespace kelo::demo
