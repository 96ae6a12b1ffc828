#include "passkey/PlatformCeremony.h"

#include "passkey/PasskeyError.h"
#include "platform/Desktop.h"

#include <utility>
#include <variant>

namespace kelo::passkey {

template <typename Credential>
Task<Credential> PlatformCeremony<Credential>::perform(platform::AuthorizationRequest request,
                                                       std::weak_ptr<PlatformCeremony> self) {
    co_return co_await withCheckedContinuation<Credential>(
        [&](CheckedContinuation<Credential> pending) {
            continuation = std::move(pending);
            const auto controller = platform::Desktop::current().makeAuthorizationController(
                std::vector{std::move(request)});
            controller->setDelegate(self);
            controller->setPresentationContextProvider(self);
            controller->performRequests();
        });
}

template <typename Credential>
void PlatformCeremony<Credential>::didCompleteWithAuthorization(
    platform::AuthorizationController&, platform::Authorization authorization) {
    const auto pending = std::exchange(continuation, std::nullopt);
    if (!pending)
        return;
    if (auto* credential = std::get_if<Credential>(&authorization.credential))
        pending->resume(std::move(*credential));
    else
        pending->fail(std::make_exception_ptr(PasskeyError::signInRejected()));
}

template <typename Credential>
void PlatformCeremony<Credential>::didCompleteWithError(platform::AuthorizationController&,
                                                        std::exception_ptr error) {
    if (const auto pending = std::exchange(continuation, std::nullopt))
        pending->fail(std::move(error));
}

template <typename Credential>
std::shared_ptr<platform::Window>
PlatformCeremony<Credential>::presentationAnchor(platform::AuthorizationController&) {
    platform::Application& application = platform::Desktop::current().application();
    if (auto key = application.keyWindow())
        return key;
    const auto windows = application.windows();
    return windows.empty() ? application.makePlainWindow() : windows.front();
}

void reportCredential(std::string_view relyingPartyIdentifier, const Bytes& credentialId,
                      bool accepted) {
    using Verdict = platform::CredentialReport::Verdict;
    platform::Desktop::current().reportCredential(
        {std::string(relyingPartyIdentifier), credentialId,
         accepted ? Verdict::accepted : Verdict::refused});
}

template class PlatformCeremony<platform::PlatformAssertionCredential>;
template class PlatformCeremony<platform::PlatformRegistrationCredential>;

} // namespace kelo::passkey
