#include "passkey/CredentialJson.h"

#include "base/Base64.h"

#include <utility>

namespace kelo::passkey {

nlohmann::json credentialJson(ByteView credentialId, nlohmann::json response) {
    const std::string id = base64URLEncode(credentialId);
    return {
        {"id", id},
        {"rawId", id},
        {"type", "public-key"},
        {"authenticatorAttachment", "platform"},
        {"clientExtensionResults", nlohmann::json::object()},
        {"response", std::move(response)},
    };
}

} // namespace kelo::passkey
