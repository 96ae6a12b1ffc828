#include "passkey/PasskeyRegistrar.h"

#include "base/Base64.h"
#include "passkey/BusyScope.h"
#include "passkey/CredentialJson.h"
#include "passkey/PasskeyError.h"
#include "platform/Desktop.h"
#include "service/ServiceEndpoints.h"

namespace kelo::passkey {

namespace {

using platform::HttpReply;

std::string joinedCookies(const std::vector<platform::HttpCookie>& cookies) {
    std::string header;
    for (const platform::HttpCookie& cookie : cookies) {
        if (!header.empty())
            header += "; ";
        header += cookie.name + '=' + cookie.value;
    }
    return header;
}

std::optional<Bytes> bytesMember(const nlohmann::json& value, std::string_view name) {
    const auto text = service::stringMember(value, name);
    return text ? base64URLDecode(*text) : std::nullopt;
}

nlohmann::json attestationJSON(const platform::PlatformRegistrationCredential& credential) {
    if (!credential.rawAttestationObject)
        throw PasskeyError::badResponse("No attestation object from authenticator.");
    nlohmann::json response = {
        {"clientDataJSON", base64URLEncode(credential.rawClientDataJson)},
        {"attestationObject", base64URLEncode(*credential.rawAttestationObject)},
        {"transports", nlohmann::json::array({"internal"})},
    };
    return credentialJson(credential.credentialId, std::move(response));
}

/// Body of the verify request. The service decides whether the text is a password or a code, so it
/// is sent under both names. Written by hand, into memory that does not grow: a JSON library would
/// leave copies of the text behind.
platform::RequestBody verifyBody(const nlohmann::json& attestation,
                                 const SecretText& passwordOrCode) {
    const std::string beginning = "{\"response\":" + service::serializeJson(attestation) +
                                  ",\"label\":\"Mac (Kelo)\",\"password\":";
    constexpr std::string_view middle = ",\"mfaCode\":";
    const std::string_view secret = passwordOrCode.view();

    Bytes json;
    json.reserve(beginning.size() + middle.size() + 2 * service::longestQuoted(secret) + 1);
    json.insert(json.end(), beginning.begin(), beginning.end());
    service::appendQuoted(json, secret);
    json.insert(json.end(), middle.begin(), middle.end());
    service::appendQuoted(json, secret);
    json.push_back('}');
    return {std::move(json)};
}

} // namespace

PasskeyRegistrar::PasskeyRegistrar()
    : base(service::serviceBaseURL()), rpID(service::relyingPartyIdentifier()) {}

Task<void> PasskeyRegistrar::registerPasskey(std::vector<platform::HttpCookie> cookies,
                                             SecretText passwordOrCode) {
    busy = true;
    const BusyScope scope(busy);
    message = std::nullopt;
    const std::string cookieHeader = joinedCookies(cookies);
    if (cookieHeader.find(service::sessionTokenMark) == std::string::npos)
        throw PasskeyError::badResponse("Log in first, then register a passkey.");

    const std::string token = co_await fetchCsrfToken(cookieHeader);
    nlohmann::json options = co_await fetchCreationOptions(cookieHeader, token);
    const auto credential = co_await performRegistration(std::move(options));
    const nlohmann::json attestation = attestationJSON(credential);

    auto request = authorizedRequest(service::endpoint::registrationVerify, "POST", cookieHeader);
    request.headers.emplace_back("x-csrf-token", token);
    request.headers.emplace_back("Content-Type", "application/json");
    request.body = verifyBody(attestation, passwordOrCode);
    const HttpReply reply =
        co_await platform::Desktop::current().sharedHttpSession().data(std::move(request));
    const bool accepted = service::isServiceSuccess(reply);
    // Without an HTTP reply nobody knows what the service has done.
    if (reply.status)
        reportCredential(rpID, credential.credentialId, accepted);
    if (accepted) {
        message = "Passkey registered on this Mac.";
        co_return;
    }
    // The words of another origin are not shown as the service's.
    const auto body = reply.changedOrigin ? std::nullopt : service::parsedJson(reply.body);
    const auto reason = body ? service::stringMember(*body, "reason") : std::nullopt;
    throw PasskeyError::badResponse("Registration failed: " + reason.value_or("server rejected") +
                                    ".");
}

platform::UrlRequest PasskeyRegistrar::authorizedRequest(std::string_view path,
                                                         std::string_view method,
                                                         const std::string& cookieHeader) const {
    auto request = service::endpointRequest(path, method);
    request.url = base.appendingPathComponent(path);
    request.headers = {{"Cookie", cookieHeader}};
    return request;
}

Task<std::string> PasskeyRegistrar::fetchCsrfToken(std::string cookieHeader) {
    auto request = authorizedRequest(service::endpoint::registrationCsrf, "GET", cookieHeader);
    const HttpReply reply =
        co_await platform::Desktop::current().sharedHttpSession().data(std::move(request));
    const auto body = reply.status == 200 ? service::parsedJson(reply.body) : std::nullopt;
    const auto token = body ? service::stringMember(*body, "token") : std::nullopt;
    if (!token)
        throw PasskeyError::badResponse("Not signed in (could not get CSRF token).");
    co_return *token;
}

Task<nlohmann::json> PasskeyRegistrar::fetchCreationOptions(std::string cookieHeader,
                                                            std::string token) {
    auto request = authorizedRequest(service::endpoint::registrationOptions, "POST", cookieHeader);
    request.headers.emplace_back("x-csrf-token", token);
    const HttpReply reply =
        co_await platform::Desktop::current().sharedHttpSession().data(std::move(request));
    if (!service::isServiceSuccess(reply))
        throw PasskeyError::badResponse("Could not start passkey registration.");
    nlohmann::json options = service::parseJson(reply.body);
    if (!options.is_object())
        throw PasskeyError::badResponse("Could not start passkey registration.");
    co_return options;
}

Task<platform::PlatformRegistrationCredential>
PasskeyRegistrar::performRegistration(nlohmann::json options) {
    auto challenge = bytesMember(options, "challenge");
    const auto user = options.is_object() ? options.find("user") : options.end();
    auto userId = user != options.end() ? bytesMember(*user, "id") : std::nullopt;
    if (!challenge || !userId)
        throw PasskeyError::badResponse("Bad registration options.");
    std::string name = service::stringMember(*user, "name")
                           .value_or(service::stringMember(*user, "displayName").value_or("Kelo"));

    const platform::PlatformPublicKeyCredentialProvider provider{rpID};
    platform::AuthorizationRequest request = provider.createCredentialRegistrationRequest(
        *std::move(challenge), std::move(name), *std::move(userId));
    co_return co_await perform(std::move(request), weak_from_this());
}

} // namespace kelo::passkey
