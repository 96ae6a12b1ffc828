#include "linux/authorization/LinuxAuthorizationController.h"

#include "authenticator/GetAssertion.h"
#include "authenticator/MakeCredential.h"
#include "base/Failure.h"
#include "base/Translation.h"
#include "base/async/Spawn.h"
#include "linux/authorization/LocalAuthenticator.h"

#include <glib.h>

#include <exception>
#include <utility>

namespace kelo::authorization {

using platform::Authorization;
using platform::AuthorizationRequest;

namespace {

/// Logs the cause of an error. The user sees only its description.
void report(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const Failure& known) {
        if (known.kind() == FailureKind::cancelled)
            g_debug("passkey: %s", known.what());
        else
            g_message("passkey: %s", known.what());
    } catch (const std::exception& unknown) {
        g_warning("passkey: %s", unknown.what());
    }
}

} // namespace

LinuxAuthorizationController::LinuxAuthorizationController(
    LocalAuthenticator& authenticator, std::vector<AuthorizationRequest> requests)
    : authenticator(authenticator), requests(std::move(requests)) {}

void LinuxAuthorizationController::setDelegate(
    std::weak_ptr<platform::AuthorizationControllerDelegate> newDelegate) {
    delegate = std::move(newDelegate);
}

void LinuxAuthorizationController::setPresentationContextProvider(
    std::weak_ptr<platform::AuthorizationPresentationContextProvider> newProvider) {
    provider = std::move(newProvider);
}

void LinuxAuthorizationController::performRequests() {
    authenticator.begin(cancellation);
    spawn(perform(shared_from_this()));
}

Task<void>
LinuxAuthorizationController::perform(std::shared_ptr<LinuxAuthorizationController> self) {
    std::optional<Authorization> authorization;
    std::exception_ptr error;
    try {
        authorization = co_await untilCancelled(self->cancellation, self->ceremony());
        if (!authorization)
            throw kelo::authenticator::requestCancelled();
    } catch (...) {
        error = std::current_exception();
    }
    if (error)
        report(error);
    else
        g_debug("passkey: the ceremony has succeeded");
    const auto listener = self->delegate.lock();
    if (!listener)
        co_return;
    if (error)
        listener->didCompleteWithError(*self, error);
    else
        listener->didCompleteWithAuthorization(*self, std::move(*authorization));
}

Task<Authorization> LinuxAuthorizationController::ceremony() {
    if (requests.size() != 1)
        throw Failure(FailureKind::notAllowed,
                      translated("Only one passkey can be asked for at a time."),
                      "a controller runs one request");
    std::shared_ptr<platform::Window> anchor;
    if (const auto context = provider.lock())
        anchor = context->presentationAnchor(*this);

    Authorization authorization;
    if (auto* registration =
            std::get_if<platform::PlatformRegistrationRequest>(&requests.front())) {
        kelo::authenticator::MakeCredential operation(authenticator.parts(),
                                                      std::move(*registration), std::move(anchor));
        authorization.credential = co_await operation.run();
    } else {
        auto& assertion = std::get<platform::PlatformAssertionRequest>(requests.front());
        kelo::authenticator::GetAssertion operation(authenticator.parts(), std::move(assertion),
                                                    std::move(anchor));
        authorization.credential = co_await operation.run();
    }
    co_return authorization;
}

} // namespace kelo::authorization
