#include "authenticator/webauthn/AuthenticatorData.h"

#include "authenticator/webauthn/CborWriter.h"

namespace kelo::webauthn {

Bytes encode(const AuthenticatorData& data) {
    Bytes bytes(data.relyingPartyHash.begin(), data.relyingPartyHash.end());
    const bool registers = data.attestedCredential.has_value();
    bytes.push_back(data.flags | (registers ? flag::attestedCredentialData : 0));
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(data.signatureCount >> shift));
    if (registers) {
        const Bytes credential = encode(*data.attestedCredential);
        bytes.insert(bytes.end(), credential.begin(), credential.end());
    }
    return bytes;
}

Bytes attestationObject(const AuthenticatorData& data) {
    CborWriter writer;
    writer.map(3);
    writer.text("fmt").text("none");
    writer.text("attStmt").map(0);
    writer.text("authData").bytes(encode(data));
    return writer.result();
}

} // namespace kelo::webauthn
