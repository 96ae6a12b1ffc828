#pragma once

#include "authenticator/Authenticator.h"
#include "base/async/Task.h"
#include "platform/Authorization.h"

#include <memory>

namespace kelo::authenticator {

/// The ceremony that makes a passkey (WebAuthn, authenticatorMakeCredential).
class MakeCredential {
public:
    /// The anchor, which may be null, is the window to present the sheet over.
    MakeCredential(const Authenticator& authenticator,
                   platform::PlatformRegistrationRequest request,
                   std::shared_ptr<platform::Window> anchor);

    /// Once. A relying party without association is refused before the user sees anything; then the
    /// user agrees and is verified, always; only then a key is made and kept. A ceremony that fails
    /// leaves nothing behind, and one that is dropped keeps nothing that was not being written
    /// already. This must outlive the task. Throws a Failure.
    Task<platform::PlatformRegistrationCredential> run();

private:
    const Authenticator authenticator;
    platform::PlatformRegistrationRequest request;
    std::shared_ptr<platform::Window> anchor;
};

} // namespace kelo::authenticator
