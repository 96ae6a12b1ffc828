#pragma once

#include "authenticator/Authenticator.h"
#include "base/async/Task.h"
#include "platform/Authorization.h"

#include <memory>

namespace kelo::authenticator {

/// The ceremony that signs in with a passkey (WebAuthn, authenticatorGetAssertion).
class GetAssertion {
public:
    /// The anchor, which may be null, is the window to present the sheet over.
    GetAssertion(const Authenticator& authenticator, platform::PlatformAssertionRequest request,
                 std::shared_ptr<platform::Window> anchor);

    /// Once. A relying party without association is refused, and a lack of passkeys reported,
    /// before the user sees anything; then the user chooses and agrees, and is verified unless the
    /// service discouraged that; then the passkey signs. This must outlive the task. Failures are
    /// Failure.
    Task<platform::PlatformAssertionCredential> run();

private:
    Task<std::vector<CredentialRecord>> candidates();

    const Authenticator authenticator;
    platform::PlatformAssertionRequest request;
    std::shared_ptr<platform::Window> anchor;
};

} // namespace kelo::authenticator
