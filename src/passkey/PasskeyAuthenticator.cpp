#include "passkey/PasskeyAuthenticator.h"

#include "base/Base64.h"
#include "base/Invariant.h"
#include "passkey/BusyScope.h"
#include "passkey/CredentialJson.h"
#include "passkey/PasskeyError.h"
#include "platform/Desktop.h"
#include "service/FormEncoding.h"
#include "service/ServiceEndpoints.h"

#include <algorithm>

namespace kelo::passkey {

namespace {

using platform::HttpCookie;
using platform::HttpReply;

/// The credentials that the service allows; empty if it names none or does not send a list of
/// objects. An element with an unreadable id is skipped, so the list may be empty.
std::optional<std::vector<platform::PlatformPublicKeyCredentialDescriptor>>
allowedCredentials(const nlohmann::json& options) {
    const auto member = options.find("allowCredentials");
    if (member == options.end() || !member->is_array() || member->empty() ||
        !std::all_of(member->begin(), member->end(),
                     [](const nlohmann::json& element) { return element.is_object(); }))
        return std::nullopt;
    std::vector<platform::PlatformPublicKeyCredentialDescriptor> descriptors;
    for (const nlohmann::json& element : *member) {
        const auto text = service::stringMember(element, "id");
        auto id = text ? base64URLDecode(*text) : std::nullopt;
        if (id)
            descriptors.push_back({*std::move(id)});
    }
    return descriptors;
}

std::vector<HttpCookie> sessionTokens(std::vector<HttpCookie> cookies) {
    std::erase_if(cookies, [](const HttpCookie& cookie) {
        return cookie.name.find(service::sessionTokenMark) == std::string::npos;
    });
    return cookies;
}

const Bytes& required(const std::optional<Bytes>& part) {
    if (!part)
        invariantBroken("an assertion has authenticator data, signature and user ID");
    return *part;
}

} // namespace

PasskeyAuthenticator::PasskeyAuthenticator()
    : session(platform::Desktop::current().makeEphemeralHttpSession()) {}

Task<std::vector<HttpCookie>> PasskeyAuthenticator::signIn() {
    busy = true;
    const BusyScope scope(busy);
    errorMessage = std::nullopt;
    nlohmann::json options = co_await fetchAssertionOptions();
    const auto credential = co_await performAssertion(std::move(options));
    co_return co_await exchangeForSession(credential);
}

Task<std::vector<HttpCookie>>
PasskeyAuthenticator::exchangeForSession(const platform::PlatformAssertionCredential& credential) {
    const auto party = service::relyingPartyIdentifier();
    const std::vector<HttpCookie> before = sessionTokens(storedCookies());
    try {
        co_await completeSignIn(assertionJSON(credential));
        const std::vector<HttpCookie> cookies = sessionCookies();
        // The token of an earlier sign-in is still in the store and proves nothing about this one.
        if (sessionTokens(cookies) != before)
            reportCredential(party, credential.credentialId, true);
        co_return cookies;
    } catch (const PasskeyError& error) {
        if (error.kind() != PasskeyError::Case::badResponse)
            reportCredential(party, credential.credentialId, false);
        throw;
    }
}

Task<nlohmann::json> PasskeyAuthenticator::fetchAssertionOptions() {
    const HttpReply reply = co_await session->data(
        service::endpointRequest(service::endpoint::assertionOptions, "POST"));
    if (!service::isServiceSuccess(reply))
        throw PasskeyError::optionsFailed();
    nlohmann::json options = service::parseJson(reply.body);
    if (!options.is_object())
        throw PasskeyError::optionsFailed();
    co_return options;
}

Task<platform::PlatformAssertionCredential>
PasskeyAuthenticator::performAssertion(nlohmann::json options) {
    const auto text = service::stringMember(options, "challenge");
    const auto challenge = text ? base64URLDecode(*text) : std::nullopt;
    if (!challenge)
        throw PasskeyError::optionsFailed();

    // Always our own relying party, whatever the service names: a passkey for this service must
    // never sign for another one.
    const platform::PlatformPublicKeyCredentialProvider provider{
        std::string(service::relyingPartyIdentifier())};
    auto request = provider.createCredentialAssertionRequest(*challenge);
    request.allowedCredentials = allowedCredentials(options);
    request.userVerificationPreference = service::stringMember(options, "userVerification");
    platform::AuthorizationRequest authorization = std::move(request);
    co_return co_await perform(std::move(authorization), weak_from_this());
}

nlohmann::json
PasskeyAuthenticator::assertionJSON(const platform::PlatformAssertionCredential& credential) {
    nlohmann::json response = {
        {"clientDataJSON", base64URLEncode(credential.rawClientDataJson)},
        {"authenticatorData", base64URLEncode(required(credential.rawAuthenticatorData))},
        {"signature", base64URLEncode(required(credential.signature))},
        {"userHandle", base64URLEncode(required(credential.userId))},
    };
    return credentialJson(credential.credentialId, std::move(response));
}

Task<std::string> PasskeyAuthenticator::fetchCsrfToken() {
    const HttpReply reply =
        co_await session->data(service::endpointURL(service::endpoint::signInCsrf));
    const auto body = service::parsedJson(reply.body);
    const auto token = body ? service::stringMember(*body, "csrfToken") : std::nullopt;
    if (!token)
        throw PasskeyError::badResponse("No CSRF token");
    co_return *token;
}

Task<void> PasskeyAuthenticator::completeSignIn(nlohmann::json assertion) {
    const std::string token = co_await fetchCsrfToken();
    const service::FormFields fields = {
        {"csrfToken", token},
        {"passkeyAssertion", service::serializeJson(assertion)},
        {"callbackUrl", service::serviceBaseURL().absoluteString()},
        {"json", "true"},
    };
    auto request = service::endpointRequest(service::endpoint::credentialsCallback, "POST");
    request.headers = {{"Content-Type", "application/x-www-form-urlencoded"},
                       {"X-Auth-Return-Redirect", "true"}};
    if (const auto form = service::formEncode(fields))
        request.body = bytesOf(*form);

    const HttpReply reply = co_await session->data(std::move(request));
    if (!reply.status)
        throw PasskeyError::badResponse("No response");
    if (*reply.status >= 400)
        throw PasskeyError::signInRejected();
    // The service may refuse with a success status and put the error into the URL to show next.
    const auto body = service::parsedJson(reply.body);
    const auto next = body ? service::stringMember(*body, "url") : std::nullopt;
    if (next && next->find("error") != std::string::npos)
        throw PasskeyError::signInRejected();
}

std::vector<HttpCookie> PasskeyAuthenticator::storedCookies() const {
    const auto* storage = session->cookieStorage();
    return storage ? storage->cookies(service::serviceBaseURL()).value_or(std::vector<HttpCookie>())
                   : std::vector<HttpCookie>();
}

std::vector<HttpCookie> PasskeyAuthenticator::sessionCookies() const {
    std::vector<HttpCookie> cookies = storedCookies();
    if (sessionTokens(cookies).empty())
        throw PasskeyError::noSessionCookie();
    return cookies;
}

} // namespace kelo::passkey
