#include "demo/SignInApi.h"

#include "base/Base64.h"
#include "demo/http/FormData.h"
#include "demo/http/Replies.h"
#include "demo/passkeys/ClientData.h"
#include "demo/passkeys/PasskeyMessages.h"

#include <nlohmann/json.hpp>

#include <chrono>

namespace kelo::demo {
namespace {

using nlohmann::json;

std::string field(const std::map<std::string, std::string>& form, const char* name) {
    const auto found = form.find(name);
    return found == form.end() ? std::string() : found->second;
}

bool liesWithin(const std::string& url, const std::string& origin) {
    return url == origin || url.starts_with(origin + "/");
}

} // namespace

SignInApi::SignInApi(ServiceContext& context) : context(context) {}

Reply SignInApi::options(const Request&) {
    const auto challenge = context.signInChallenges.issue("", std::chrono::steady_clock::now());
    const std::chrono::milliseconds timeout = ChallengeTable::lifetime;
    // No allowed credentials: the authenticator finds the account, and nobody can ask the service
    // which accounts have passkeys.
    return jsonReply(200, {{"challenge", base64URLEncode(challenge)},
                           {"rpId", ServiceContext::relyingParty},
                           {"timeout", timeout.count()},
                           {"userVerification", "required"},
                           {"allowCredentials", json::array()}});
}

Reply SignInApi::csrf(const Request& request) {
    Reply cookie;
    const auto token = context.csrfTokenFor(request, cookie);
    auto reply = jsonReply(200, {{"csrfToken", token}});
    reply.headers = std::move(cookie.headers);
    return reply;
}

Reply SignInApi::callback(const Request& request) {
    if (!request.hasContentType("application/x-www-form-urlencoded"))
        return refusal(415, "Send a form (application/x-www-form-urlencoded)");
    const auto form = parseForm(request.body);
    if (!form)
        return refusal(400, "The form is malformed");
    if (!context.isCsrfTokenOf(request, field(*form, "csrfToken")))
        return answerCallback(request, *form, "The CSRF token does not belong to the cookie", "");
    if (!liesWithin(field(*form, "callbackUrl"), context.origin))
        return answerCallback(request, *form, "The callback URL is not of this service", "");
    try {
        return answerCallback(request, *form, "", checkAssertion(field(*form, "passkeyAssertion")));
    } catch (const PasskeyRefused& refused) {
        return answerCallback(request, *form, refused.what(), "");
    }
}

/// The address of the account that the assertion signs in. Throws PasskeyRefused.
std::string SignInApi::checkAssertion(const std::string& assertion) {
    const json credential = json::parse(assertion, nullptr, false);
    const auto message = parseAssertion(credential);
    if (!message)
        throw PasskeyRefused("The assertion is malformed");
    const auto clientData = parseClientData(message->clientData);
    if (!clientData)
        throw PasskeyRefused("The client data is malformed");
    if (!context.signInChallenges.consume(clientData->challenge, "",
                                          std::chrono::steady_clock::now()))
        throw PasskeyRefused("The challenge is unknown, used or expired");

    Passkey* passkey = context.passkeys.find(message->credentialId);
    const Account* account = passkey ? context.accounts.find(passkey->email) : nullptr;
    if (!account)
        throw PasskeyRefused("The passkey is not registered");
    if (message->userHandle != account->userHandle)
        throw PasskeyRefused("The passkey belongs to another account");
    passkey->counter = context.verifier.verifyAssertion(*message, clientData->challenge, *passkey);
    context.record.add("sign-in", clientData->origin, clientData->challenge, credential);
    return account->email;
}

Reply SignInApi::answerCallback(const Request& request, const Form& form, const std::string& reason,
                                const std::string& email) {
    const bool accepted = reason.empty();
    const auto target =
        accepted ? field(form, "callbackUrl") : context.origin + "/login?error=CredentialsSignin";
    const bool wantsJson =
        field(form, "json") == "true" || request.header("x-auth-return-redirect") == "true";
    json body = {{"url", target}};
    if (!accepted)
        body["reason"] = reason;
    auto reply = wantsJson ? jsonReply(accepted ? 200 : 401, body) : redirectTo(target);
    if (accepted)
        context.openSession(request, email, reply);
    return reply;
}

} // namespace kelo::demo
