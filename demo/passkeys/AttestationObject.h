#pragma once

#include "base/Bytes.h"

namespace kelo::demo {

/// The authenticator data inside an attestation object of the format "none", as a part of the given
/// bytes. Authenticators must encode canonically, which leaves one spelling only: everything else,
/// bytes behind the end included, throws PasskeyRefused.
ByteView authenticatorDataOf(ByteView attestationObject);

} // namespace kelo::demo
