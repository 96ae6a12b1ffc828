#include "authenticator/AuthorizationGesture.h"

#include <utility>

namespace kelo::authenticator {

AuthorizationGesture::AuthorizationGesture(const AuthenticatorParts& parts,
                                           std::shared_ptr<platform::Window> anchor)
    : parts(parts), anchor(std::move(anchor)) {}

AuthorizationGesture::~AuthorizationGesture() = default;

Task<std::size_t> AuthorizationGesture::confirm(ConsentRequest request) {
    const std::size_t accounts = request.accountNames.size();
    sheet = parts.sheets.makeSheet(anchor);
    const std::optional<std::size_t> chosen = co_await sheet->confirm(std::move(request));
    if (!chosen || *chosen >= accounts)
        throw requestCancelled();
    co_return *chosen;
}

Task<void> AuthorizationGesture::verify() {
    const VerificationOutcome outcome = co_await parts.verifier.verify(*sheet);
    switch (outcome) {
    case VerificationOutcome::verified:
        co_return;
    case VerificationOutcome::cancelled:
        throw requestCancelled();
    case VerificationOutcome::unavailable:
        throw Failure(FailureKind::notAllowed,
                      "This computer has no way to check that it is you, so the passkey was not "
                      "used. Make sure that Kelo is installed completely and that your account has "
                      "a password.",
                      "user verification is unavailable");
    case VerificationOutcome::failed:
        break;
    }
    throw Failure(FailureKind::notAllowed,
                  "Kelo could not verify that it is you, so the passkey was not used. Please try "
                  "again.",
                  "user verification failed");
}

} // namespace kelo::authenticator
