#include "passkey/CredentialJson.h"

#include "passkey/Base64URL.h"

#include <utility>

namespace kelo {

nlohmann::json credentialJson(platform::ByteView credentialId, nlohmann::json response) {
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

} // namespace kelo
