#include "authenticator/MakeCredential.h"

#include "authenticator/AuthorizationGesture.h"
#include "authenticator/keys/Cryptography.h"
#include "authenticator/webauthn/AuthenticatorData.h"
#include "authenticator/webauthn/ClientData.h"
#include "base/Translation.h"

#include <utility>

namespace kelo::authenticator {

namespace {

constexpr std::size_t credentialIdSize = 32;
constexpr std::size_t longestUserId = 64;

void requireUserId(const Bytes& userId) {
    if (userId.empty() || userId.size() > longestUserId)
        throw Failure(FailureKind::notAllowed,
                      translated("The service sent an account that a passkey cannot be made for. "
                                 "Nothing was registered."),
                      "user id of " + std::to_string(userId.size()) + " bytes");
}

Bytes attest(const CredentialRecord& record) {
    webauthn::AuthenticatorData data;
    data.relyingPartyHash = sha256(record.relyingPartyIdentifier);
    data.flags = webauthn::flag::userPresent | webauthn::flag::userVerified;
    data.attestedCredential.emplace();
    data.attestedCredential->credentialId = record.credentialId;
    data.attestedCredential->publicKey = record.publicKey;
    return webauthn::attestationObject(data);
}

} // namespace

MakeCredential::MakeCredential(const AuthenticatorParts& parts,
                               platform::PlatformRegistrationRequest request,
                               std::shared_ptr<platform::Window> anchor)
    : parts(parts), request(std::move(request)), anchor(std::move(anchor)) {}

Task<platform::PlatformRegistrationCredential> MakeCredential::run() {
    const Association& association = parts.requireAssociation(request.relyingPartyIdentifier);
    requireUserId(request.userId);

    AuthorizationGesture gesture(parts, anchor);
    ConsentRequest question;
    question.ceremony = Ceremony::registration;
    question.relyingPartyIdentifier = request.relyingPartyIdentifier;
    question.accountNames.push_back(request.name);
    co_await gesture.confirm(std::move(question));
    // The service's wish is not known here, so it may be "required".
    co_await gesture.verify(VerificationNeed::required);

    CreatedKey key = co_await gesture.unlessCancelled(parts.keys.create());

    CredentialRecord record;
    record.credentialId = randomBytes(credentialIdSize);
    record.relyingPartyIdentifier = request.relyingPartyIdentifier;
    record.userId = request.userId;
    record.accountName = request.name;
    record.created = std::chrono::floor<std::chrono::seconds>(parts.clock.now());
    record.publicKey = key.publicKey;
    record.wrappedPrivateKey = std::move(key.wrappedPrivateKey);
    record.keeper = key.keeper;

    webauthn::ClientData clientData;
    clientData.type = "webauthn.create";
    clientData.challenge = request.challenge;
    clientData.origin = association.origin;

    platform::PlatformRegistrationCredential credential;
    credential.credentialId = record.credentialId;
    credential.rawClientDataJson = bytesOf(webauthn::clientDataJson(clientData));
    credential.rawAttestationObject = attest(record);

    // Last, when nothing else can fail. The store is copied because the worker may run the job
    // after the ceremony has been destroyed.
    auto save = [store = parts.credentials, record = std::move(record)] { store.save(record); };
    co_await onWorker(parts.worker, std::move(save));
    co_return credential;
}

} // namespace kelo::authenticator
