#pragma once

#include "base/Bytes.h"
#include "demo/passkeys/PasskeyMessages.h"
#include "demo/passkeys/PasskeyRefused.h"
#include "demo/passkeys/PasskeyStore.h"

#include <cstdint>
#include <string>

namespace kelo::demo {

/// Verifies what authenticators send, with libfido2, which shares no code with our authenticator.
/// Throws PasskeyRefused. The caller checks that the challenge is still valid.
class PasskeyVerifier {
public:
    /// The relying party is a bare host; the origin https://host or https://host:port.
    PasskeyVerifier(std::string relyingParty, std::string origin);

    /// A new passkey: made for this relying party and this challenge, user present and verified, an
    /// ES256 key on its curve, attestation "none". The caller adds owner, label and date.
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
