#pragma once

#include "authenticator/AuthenticatorParts.h"
#include "base/async/Task.h"
#include "platform/Authorization.h"

#include <memory>

namespace kelo::authenticator {

/// The ceremony that makes a passkey (WebAuthn, authenticatorMakeCredential).
class MakeCredential {
public:
    /// The sheet is presented over the anchor, which may be null.
    MakeCredential(const AuthenticatorParts& parts, platform::PlatformRegistrationRequest request,
                   std::shared_ptr<platform::Window> anchor);

    /// Runs the ceremony. Call it once; this object must outlive the task. Refuses a relying party
    /// without an association before it shows anything. Then the user consents and is always
    /// verified. Then the key is created and stored. A ceremony that fails stores nothing. A task
    /// that is destroyed stores nothing either, unless the write has already started. Throws a
    /// Failure.
    Task<platform::PlatformRegistrationCredential> run();

private:
    const AuthenticatorParts parts;
    platform::PlatformRegistrationRequest request;
    std::shared_ptr<platform::Window> anchor;
};

} // namespace kelo::authenticator
