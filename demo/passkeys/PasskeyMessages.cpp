#include "demo/passkeys/PasskeyMessages.h"

#include "base/Base64.h"

#include <nlohmann/json.hpp>

#include <string>
#include <utility>

namespace kelo::demo {
namespace {

constexpr std::size_t longestCredentialId = 1023;

std::optional<Bytes> binary(const nlohmann::json& object, const char* member) {
    const auto found = object.find(member);
    if (found == object.end() || !found->is_string())
        return std::nullopt;
    return base64URLDecodeStrict(found->get_ref<const std::string&>());
}

/// The members that both kinds share: the credential id, and the object with what was signed.
std::optional<Bytes> credentialIdOf(const nlohmann::json& credential) {
    if (!credential.is_object() || credential.value("type", nlohmann::json()) != "public-key")
        return std::nullopt;
    auto identifier = binary(credential, "id");
    if (!identifier || identifier != binary(credential, "rawId") || identifier->empty() ||
        identifier->size() > longestCredentialId)
        return std::nullopt;
    const auto response = credential.find("response");
    if (response == credential.end() || !response->is_object())
        return std::nullopt;
    return identifier;
}

} // namespace

std::optional<AssertionMessage> parseAssertion(const nlohmann::json& credential) {
    auto identifier = credentialIdOf(credential);
    if (!identifier)
        return std::nullopt;
    const auto& response = credential["response"];
    auto clientData = binary(response, "clientDataJSON");
    auto authenticatorData = binary(response, "authenticatorData");
    auto signature = binary(response, "signature");
    auto userHandle = binary(response, "userHandle");
    if (!clientData || !authenticatorData || !signature || !userHandle)
        return std::nullopt;
    return AssertionMessage{std::move(*identifier), std::move(*clientData),
                            std::move(*authenticatorData), std::move(*signature),
                            std::move(*userHandle)};
}

std::optional<AttestationMessage> parseAttestation(const nlohmann::json& credential) {
    auto identifier = credentialIdOf(credential);
    if (!identifier)
        return std::nullopt;
    const auto& response = credential["response"];
    auto clientData = binary(response, "clientDataJSON");
    auto attestationObject = binary(response, "attestationObject");
    if (!clientData || !attestationObject)
        return std::nullopt;
    return AttestationMessage{std::move(*identifier), std::move(*clientData),
                              std::move(*attestationObject)};
}

} // namespace kelo::demo
