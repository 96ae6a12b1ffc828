#pragma once

#include "authenticator/AuthenticatorParts.h"
#include "base/async/Task.h"
#include "platform/Authorization.h"

#include <memory>

namespace kelo::authenticator {

/// The ceremony that signs in with a passkey (WebAuthn, authenticatorGetAssertion).
class GetAssertion {
public:
    /// The sheet is presented over the anchor, which may be null.
    GetAssertion(const AuthenticatorParts& parts, platform::PlatformAssertionRequest request,
                 std::shared_ptr<platform::Window> anchor);

    /// Runs the ceremony. Call it once; this object must outlive the task. Refuses a relying party
    /// without an association and reports a missing passkey before it shows anything. Of several
    /// allowed passkeys of one account it uses the newest that the service has refused the least.
    /// Then the user chooses an account and consents, and is verified, whatever the service
    /// prefers. Only on a computer without any means to verify a user, and only if the service does
    /// not require it, the consent is enough; the signed data then says so. Then the passkey signs.
    /// Throws a Failure.
    Task<platform::PlatformAssertionCredential> run();

private:
    /// The passkeys to choose from, one for each account.
    Task<std::vector<CredentialRecord>> candidates();
    /// Has it written down that the passkey was used, and does not wait for that.
    void noteUse(const CredentialRecord& record);

    const AuthenticatorParts parts;
    platform::PlatformAssertionRequest request;
    std::shared_ptr<platform::Window> anchor;
};

} // namespace kelo::authenticator
