#pragma once

#include "authenticator/KeyStore.h"
#include "platform/Bytes.h"

namespace kelo::authenticator {

/// The COSE_Key of an ES256 public key: kty, alg, crv, x and y, and nothing else.
platform::Bytes coseKey(const PublicKey& publicKey);

} // namespace kelo::authenticator
