#pragma once

#include "base/async/Continuation.h"
#include "base/async/Task.h"
#include "platform/Authorization.h"

#include <memory>
#include <optional>

namespace kelo::passkey {

/// What sign-in and registration share of a platform passkey ceremony: the one pending
/// continuation, the window to present over, and the failure that passes through unchanged. Derived
/// from by the driver that takes the Credential; the driver must be owned by a shared pointer.
template <typename Credential>
class PlatformCeremony : public platform::AuthorizationControllerDelegate,
                         public platform::AuthorizationPresentationContextProvider {
public:
    void didCompleteWithAuthorization(platform::AuthorizationController& controller,
                                      platform::Authorization authorization) final;
    void didCompleteWithError(platform::AuthorizationController& controller,
                              std::exception_ptr error) final;
    std::shared_ptr<platform::Window>
    presentationAnchor(platform::AuthorizationController& controller) final;

protected:
    /// Runs one request and waits for the delegate call it ends with. A former ceremony that is
    /// still pending is forgotten without being resumed.
    Task<Credential> perform(platform::AuthorizationRequest request,
                             std::weak_ptr<PlatformCeremony> self);

    std::optional<CheckedContinuation<Credential>> continuation;
};

extern template class PlatformCeremony<platform::PlatformAssertionCredential>;
extern template class PlatformCeremony<platform::PlatformRegistrationCredential>;

} // namespace kelo::passkey
