#include "authenticator/GetAssertion.h"

#include "authenticator/AuthorizationGesture.h"
#include "authenticator/keys/Cryptography.h"
#include "authenticator/webauthn/AuthenticatorData.h"
#include "authenticator/webauthn/ClientData.h"
#include "base/Translation.h"

#include <algorithm>
#include <utility>

namespace kelo::authenticator {

namespace {

/// WebAuthn lets an authenticator verify more than it is asked to, so the user is verified also for
/// "discouraged". An unknown or missing preference counts as "preferred", as WebAuthn has it.
VerificationNeed needOf(const platform::PlatformAssertionRequest& request) {
    return request.userVerificationPreference == "required" ? VerificationNeed::required
                                                            : VerificationNeed::preferred;
}

bool allows(const platform::PlatformAssertionRequest& request, const CredentialRecord& record) {
    const auto& allowed = request.allowedCredentials;
    using Descriptor = platform::PlatformPublicKeyCredentialDescriptor;
    return !allowed || allowed->empty() ||
           std::ranges::find(*allowed, record.credentialId, &Descriptor::credentialId) !=
               allowed->end();
}

/// One passkey for each account, in the same order. An account has several after a registration
/// whose end is unknown, or which the service has refused. The newest signs, unless the service has
/// refused it more often than another one: so a sign-in that fails is followed by one with another
/// passkey.
std::vector<CredentialRecord> onePerAccount(std::vector<CredentialRecord> newestFirst) {
    std::vector<CredentialRecord> offered;
    for (CredentialRecord& record : newestFirst) {
        const auto other = std::ranges::find(offered, record.userId, &CredentialRecord::userId);
        if (other == offered.end())
            offered.push_back(std::move(record));
        else if (record.refusals < other->refusals)
            *other = std::move(record);
    }
    return offered;
}

[[noreturn]] void noCredential(const std::string& relyingPartyIdentifier) {
    throw Failure(FailureKind::noCredential,
                  translated("There is no passkey for %1 on this computer. Sign in another way, "
                             "then register one from the Account menu.",
                             {relyingPartyIdentifier}),
                  "no credential matches the request");
}

} // namespace

GetAssertion::GetAssertion(const AuthenticatorParts& parts,
                           platform::PlatformAssertionRequest request,
                           std::shared_ptr<platform::Window> anchor)
    : parts(parts), request(std::move(request)), anchor(std::move(anchor)) {}

Task<std::vector<CredentialRecord>> GetAssertion::candidates() {
    auto read = [store = parts.credentials, party = request.relyingPartyIdentifier] {
        return store.find(party);
    };
    std::vector<CredentialRecord> records = co_await onWorker(parts.worker, std::move(read));
    std::erase_if(records,
                  [&](const CredentialRecord& record) { return !allows(request, record); });
    co_return onePerAccount(std::move(records));
}

void GetAssertion::noteUse(const CredentialRecord& record) {
    const auto now = std::chrono::floor<std::chrono::seconds>(parts.clock.now());
    parts.worker.perform([store = parts.credentials, party = record.relyingPartyIdentifier,
                          identifier = record.credentialId, now] {
        try {
            store.noteUsed(party, identifier, now);
        } catch (const Failure&) {
            // The user has signed in. That the list of passkeys shows an earlier day is no harm.
        }
    });
}

Task<platform::PlatformAssertionCredential> GetAssertion::run() {
    const Association& association = parts.requireAssociation(request.relyingPartyIdentifier);
    std::vector<CredentialRecord> records = co_await candidates();
    if (records.empty())
        noCredential(request.relyingPartyIdentifier);

    AuthorizationGesture gesture(parts, anchor);
    ConsentRequest question;
    question.ceremony = Ceremony::signIn;
    question.relyingPartyIdentifier = request.relyingPartyIdentifier;
    for (const CredentialRecord& record : records)
        question.accountNames.push_back(record.accountName);
    const std::size_t chosen = co_await gesture.confirm(std::move(question));
    const bool verified = co_await gesture.verify(needOf(request));
    CredentialRecord& record = records[chosen];

    webauthn::AuthenticatorData data;
    data.relyingPartyHash = sha256(record.relyingPartyIdentifier);
    data.flags = webauthn::flag::userPresent | (verified ? webauthn::flag::userVerified : 0);

    webauthn::ClientData clientData;
    clientData.type = "webauthn.get";
    clientData.challenge = request.challenge;
    clientData.origin = association.origin;

    platform::PlatformAssertionCredential credential;
    credential.rawAuthenticatorData = encode(data);
    credential.rawClientDataJson = bytesOf(webauthn::clientDataJson(clientData));

    Bytes message = *credential.rawAuthenticatorData;
    const Sha256Digest clientDataHash = sha256(credential.rawClientDataJson);
    message.insert(message.end(), clientDataHash.begin(), clientDataHash.end());
    const Sha256Digest digest = sha256(message);
    Bytes digestBytes(digest.begin(), digest.end());
    credential.signature = co_await gesture.unlessCancelled(parts.keys.sign(
        record.keeper, std::move(record.wrappedPrivateKey), std::move(digestBytes)));
    noteUse(record);
    credential.credentialId = std::move(record.credentialId);
    credential.userId = std::move(record.userId);
    co_return credential;
}

} // namespace kelo::authenticator
