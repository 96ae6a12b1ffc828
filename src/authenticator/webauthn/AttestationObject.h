#pragma once

#include "authenticator/webauthn/AuthenticatorData.h"
#include "base/Bytes.h"

namespace kelo::webauthn {

/// The attestation object of a registration in the format "none": a passkey of this authenticator
/// claims nothing about the hardware it lives in.
Bytes attestationObject(const AuthenticatorData& data);

} // namespace kelo::webauthn
