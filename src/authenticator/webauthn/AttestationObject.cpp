#include "authenticator/webauthn/AttestationObject.h"

#include "authenticator/webauthn/CborWriter.h"

namespace kelo::webauthn {

Bytes attestationObject(const AuthenticatorData& data) {
    CborWriter writer;
    writer.map(3);
    writer.text("fmt").text("none");
    writer.text("attStmt").map(0);
    writer.text("authData").bytes(encode(data));
    return writer.result();
}

} // namespace kelo::webauthn
