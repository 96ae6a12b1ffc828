#include "authenticator/webauthn/AuthenticatorData.h"

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

} // namespace kelo::webauthn
