#pragma once

#include "base/async/Continuation.h"
#include "base/async/Task.h"
#include "platform/Authorization.h"

#include <memory>
#include <optional>
#include <string_view>

namespace kelo::passkey {

/// What sign-in and registration share of a platform passkey ceremony: the pending continuation,
/// the presentation anchor, and failures passed on unchanged. Base class of the drivers, which must
/// be owned by a shared pointer.
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
    /// Performs one request and waits for its delegate callback. A previous ceremony that is still
    /// pending is forgotten and never resumed.
    Task<Credential> perform(platform::AuthorizationRequest request,
                             std::weak_ptr<PlatformCeremony> self);

    std::optional<CheckedContinuation<Credential>> continuation;
};

/// Tells the platform whether the service has accepted a passkey.
void reportCredential(std::string_view relyingPartyIdentifier, const Bytes& credentialId,
                      bool accepted);

extern template class PlatformCeremony<platform::PlatformAssertionCredential>;
extern template class PlatformCeremony<platform::PlatformRegistrationCredential>;

} // namespace kelo::passkey
