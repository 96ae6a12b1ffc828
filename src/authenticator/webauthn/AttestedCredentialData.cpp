#include "authenticator/webauthn/AttestedCredentialData.h"

#include "authenticator/webauthn/CborWriter.h"
#include "base/Invariant.h"

namespace kelo::webauthn {

Bytes coseKey(const PublicKey& publicKey) {
    constexpr int keyType = 1, algorithm = 3, curve = -1, x = -2, y = -3;
    constexpr int ellipticCurveKey = 2, es256 = -7, p256 = 1;
    CborWriter writer;
    writer.map(5);
    writer.integer(keyType).integer(ellipticCurveKey);
    writer.integer(algorithm).integer(es256);
    writer.integer(curve).integer(p256);
    writer.integer(x).bytes(publicKey.x);
    writer.integer(y).bytes(publicKey.y);
    return writer.result();
}

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
