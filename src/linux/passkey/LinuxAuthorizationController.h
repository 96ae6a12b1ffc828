#pragma once

#include "authenticator/Cancellation.h"
#include "platform/Authorization.h"
#include "platform/Task.h"

#include <memory>
#include <vector>

namespace kelo::desktop {

class PasskeyServices;

/// Runs one request with this computer's own authenticator.
class LinuxAuthorizationController final
    : public platform::AuthorizationController,
      public std::enable_shared_from_this<LinuxAuthorizationController> {
public:
    /// The services must outlive the controller's ceremony.
    LinuxAuthorizationController(PasskeyServices& services,
                                 std::vector<platform::AuthorizationRequest> requests);

    void setDelegate(std::weak_ptr<platform::AuthorizationControllerDelegate> delegate) override;
    void setPresentationContextProvider(
        std::weak_ptr<platform::AuthorizationPresentationContextProvider> provider) override;
    void performRequests() override;

private:
    static platform::Task<void> perform(std::shared_ptr<LinuxAuthorizationController> self);
    platform::Task<platform::Authorization> ceremony();
    void report(const std::exception_ptr& error);

    PasskeyServices& services;
    std::vector<platform::AuthorizationRequest> requests;
    std::weak_ptr<platform::AuthorizationControllerDelegate> delegate;
    std::weak_ptr<platform::AuthorizationPresentationContextProvider> provider;
    authenticator::Cancellation cancellation;
};

} // namespace kelo::desktop
