#pragma once

#include "base/async/Cancellation.h"
#include "base/async/Task.h"
#include "platform/Authorization.h"

#include <memory>
#include <vector>

namespace kelo::authorization {

class LocalAuthenticator;

/// Runs one request with the authenticator of this computer.
class LinuxAuthorizationController final
    : public platform::AuthorizationController,
      public std::enable_shared_from_this<LinuxAuthorizationController> {
public:
    /// The authenticator must outlive the ceremony.
    LinuxAuthorizationController(LocalAuthenticator& authenticator,
                                 std::vector<platform::AuthorizationRequest> requests);

    void setDelegate(std::weak_ptr<platform::AuthorizationControllerDelegate> delegate) override;
    void setPresentationContextProvider(
        std::weak_ptr<platform::AuthorizationPresentationContextProvider> provider) override;
    void performRequests() override;

private:
    static Task<void> perform(std::shared_ptr<LinuxAuthorizationController> self);
    Task<platform::Authorization> ceremony();

    LocalAuthenticator& authenticator;
    std::vector<platform::AuthorizationRequest> requests;
    std::weak_ptr<platform::AuthorizationControllerDelegate> delegate;
    std::weak_ptr<platform::AuthorizationPresentationContextProvider> provider;
    Cancellation cancellation;
};

} // namespace kelo::authorization
