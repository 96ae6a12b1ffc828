#include "authenticator/webauthn/CoseKey.h"

#include "authenticator/webauthn/CborWriter.h"

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

} // namespace kelo::webauthn
