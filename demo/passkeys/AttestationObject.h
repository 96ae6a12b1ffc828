#pragma once

#include "base/Bytes.h"

namespace kelo::demo {

/// The authenticator data inside an attestation object of the format "none", as a part of the given
/// bytes. Authenticators must use CBOR's canonical encoding, so there is exactly one spelling.
/// Anything else, and bytes after the end, throw PasskeyRefused.
ByteView authenticatorDataOf(ByteView attestationObject);

} // namespace kelo::demo
