#pragma once

#include "platform/Bytes.h"

namespace kelo::demo {

/// The authenticator data inside an attestation object of the format "none", as a part of the given
/// bytes. Authenticators must encode canonically, which leaves one spelling only: everything else,
/// bytes behind the end included, throws PasskeyRefused.
platform::ByteView authenticatorDataOf(platform::ByteView attestationObject);

} // namespace kelo::demo
