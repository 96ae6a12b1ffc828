#pragma once

#include "platform/Authorization.h"

#include <memory>
#include <utility>
#include <vector>

namespace kelo::fakes {

/// A ceremony that ends as the test says.
class FakeAuthorizationController final : public platform::AuthorizationController {
public:
    explicit FakeAuthorizationController(std::vector<platform::AuthorizationRequest> requests)
        : requests(std::move(requests)) {}

    void
    setDelegate(std::weak_ptr<platform::AuthorizationControllerDelegate> newDelegate) override {
        delegate = std::move(newDelegate);
    }
    void setPresentationContextProvider(
        std::weak_ptr<platform::AuthorizationPresentationContextProvider> newProvider) override {
        provider = std::move(newProvider);
    }
    void performRequests() override { performed = true; }

    void complete(platform::Authorization authorization) {
        if (const auto target = delegate.lock())
            target->didCompleteWithAuthorization(*this, std::move(authorization));
    }
    void fail(std::exception_ptr error) {
        if (const auto target = delegate.lock())
            target->didCompleteWithError(*this, std::move(error));
    }

    const std::vector<platform::AuthorizationRequest> requests;
    std::weak_ptr<platform::AuthorizationControllerDelegate> delegate;
    std::weak_ptr<platform::AuthorizationPresentationContextProvider> provider;
    bool performed = false;
};

} // namespace kelo::fakes
