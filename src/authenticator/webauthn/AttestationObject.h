#pragma once

#include "authenticator/webauthn/AuthenticatorData.h"
#include "platform/Bytes.h"

namespace kelo::authenticator {

/// The attestation object of a registration in the format "none": a passkey of this authenticator
/// claims nothing about the hardware it lives in.
platform::Bytes attestationObject(const AuthenticatorData& data);

} // namespace kelo::authenticator
