#pragma once

#include "authenticator/keys/Cryptography.h"
#include "base/Bytes.h"

namespace kelo {

/// ECDSA over P-256 and SHA-256 with the deterministic nonce of RFC 6979, for comparing signatures
/// byte for byte. Not for keys of real people: it does not run in constant time.
Bytes signDeterministically(const Bytes& privateScalar, const authenticator::Sha256Digest& digest);

} // namespace kelo
