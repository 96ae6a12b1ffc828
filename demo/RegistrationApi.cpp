#include "demo/RegistrationApi.h"

#include "base/Base64.h"
#include "base/SecretText.h"
#include "demo/base/Digest.h"
#include "demo/http/Replies.h"
#include "demo/passkeys/ClientData.h"
#include "demo/passkeys/PasskeyMessages.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <utility>

namespace kelo::demo {
namespace {

using nlohmann::json;

constexpr std::size_t longestLabel = 200;

/// A text member; empty when it is missing or something else.
std::string textMember(const json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

SecretText secretMember(const json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string()
               ? SecretText(found->get_ref<const std::string&>())
               : SecretText();
}

} // namespace

RegistrationApi::RegistrationApi(ServiceContext& context) : context(context) {}

Reply RegistrationApi::csrf(const Request& request) {
    const Session* session = context.sessionOf(request);
    return session ? jsonReply(200, {{"token", session->csrfToken}})
                   : refusal(401, "Not signed in");
}

std::optional<Reply> RegistrationApi::refuseUnlessSignedIn(const Request& request) const {
    const Session* session = context.sessionOf(request);
    if (!session)
        return refusal(401, "Not signed in");
    if (!equalInConstantTime(request.header("x-csrf-token"), session->csrfToken))
        return refusal(403, "The CSRF token does not belong to the session");
    return std::nullopt;
}

Reply RegistrationApi::options(const Request& request) {
    if (auto refused = refuseUnlessSignedIn(request))
        return *refused;
    const Session& session = *context.sessionOf(request);
    const Account& account = *context.accounts.find(session.email);
    const auto challenge =
        context.registrationChallenges.issue(session.identifier, std::chrono::steady_clock::now());
    const std::chrono::milliseconds timeout = ChallengeTable::lifetime;
    json reply;
    reply["challenge"] = base64URLEncode(challenge);
    reply["rp"] = {{"id", ServiceContext::relyingParty}, {"name", "Kelo"}};
    reply["user"] = {{"id", base64URLEncode(account.userHandle)},
                     {"name", account.email},
                     {"displayName", account.displayName}};
    reply["pubKeyCredParams"] = json::array({{{"type", "public-key"}, {"alg", -7}}});
    reply["timeout"] = timeout.count();
    // Empty on purpose: registering again on the same computer is how a user gets a fresh passkey.
    reply["excludeCredentials"] = json::array();
    reply["authenticatorSelection"] = {{"residentKey", "required"},
                                       {"requireResidentKey", true},
                                       {"userVerification", "required"}};
    reply["attestation"] = "none";
    return jsonReply(200, reply);
}

Reply RegistrationApi::verify(const Request& request) {
    if (auto refused = refuseUnlessSignedIn(request))
        return *refused;
    if (!request.hasContentType("application/json"))
        return refusal(415, "Send JSON (application/json)");
    const auto body = json::parse(request.body, nullptr, false);
    if (!body.is_object())
        return refusal(400, "The request is malformed");

    const Session& session = *context.sessionOf(request);
    const Account& account = *context.accounts.find(session.email);
    try {
        auto passkey = checkAttestation(body, session);
        if (auto refused = refuseUnlessConfirmed(body, account))
            return *refused;
        const auto identifier = passkey.credentialId;
        if (!context.passkeys.add(std::move(passkey)))
            return refusal(400, "This passkey is registered already");
        if (!context.save()) {
            context.passkeys.remove(identifier);
            return refusal(500, "The passkey could not be stored");
        }
        return jsonReply(200, {{"ok", true}});
    } catch (const PasskeyRefused& refused) {
        return refusal(400, refused.what());
    }
}

Passkey RegistrationApi::checkAttestation(const json& body, const Session& session) {
    const auto message = parseAttestation(body.value("response", json()));
    if (!message)
        throw PasskeyRefused("The attestation is malformed");
    const auto clientData = parseClientData(message->clientData);
    if (!clientData)
        throw PasskeyRefused("The client data is malformed");
    if (!context.registrationChallenges.consume(clientData->challenge, session.identifier,
                                                std::chrono::steady_clock::now()))
        throw PasskeyRefused("The challenge is unknown, used or expired");
    auto passkey = context.verifier.verifyRegistration(*message, clientData->challenge);
    context.record.add("registration", clientData->origin, clientData->challenge, body["response"]);

    passkey.label = textMember(body, "label");
    if (passkey.label.find_first_not_of(" \t\r\n") == std::string::npos)
        passkey.label = "Passkey";
    if (passkey.label.size() > longestLabel)
        throw PasskeyRefused("The label is too long");
    passkey.email = session.email;
    passkey.registered = std::chrono::system_clock::now();
    return passkey;
}

std::optional<Reply> RegistrationApi::refuseUnlessConfirmed(const json& body,
                                                            const Account& account) {
    const auto password = secretMember(body, "password");
    const auto code = secretMember(body, "mfaCode");
    switch (context.accounts.checkPasswordOrCode(account, password.view(), code.view(),
                                                 std::chrono::steady_clock::now(),
                                                 std::chrono::system_clock::now())) {
    case SecretCheck::right:
        return std::nullopt;
    case SecretCheck::wrong:
        return refusal(400, "Invalid code");
    case SecretCheck::tooManyTries:
        return refusal(429, "Too many attempts, wait a minute and try again");
    }
    return refusal(400, "Invalid code");
}

} // namespace kelo::demo
