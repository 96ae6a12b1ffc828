#include "authenticator/webauthn/AttestedCredentialData.h"

#include "authenticator/webauthn/CoseKey.h"
#include "base/Invariant.h"

namespace kelo::webauthn {

Bytes encode(const AttestedCredentialData& data) {
    const std::size_t length = data.credentialId.size();
    if (length > 1023)
        invariantBroken("a credential id has at most 1023 bytes");
    Bytes bytes(data.aaguid.begin(), data.aaguid.end());
    bytes.push_back(static_cast<std::uint8_t>(length >> 8));
    bytes.push_back(static_cast<std::uint8_t>(length));
    bytes.insert(bytes.end(), data.credentialId.begin(), data.credentialId.end());
    const Bytes key = coseKey(data.publicKey);
    bytes.insert(bytes.end(), key.begin(), key.end());
    return bytes;
}

} // namespace kelo::webauthn
