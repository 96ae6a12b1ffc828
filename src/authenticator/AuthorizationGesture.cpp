#include "authenticator/AuthorizationGesture.h"

#include "base/Translation.h"

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

Task<bool> AuthorizationGesture::verify(VerificationNeed need) {
    const VerificationOutcome outcome = co_await parts.verifier.verify(*sheet);
    switch (outcome) {
    case VerificationOutcome::verified:
        co_return true;
    case VerificationOutcome::cancelled:
        throw requestCancelled();
    case VerificationOutcome::unavailable:
        if (need == VerificationNeed::preferred)
            co_return false;
        throw Failure(
            FailureKind::notAllowed,
            translated("This computer has no way to check that it is you, so the passkey was not "
                       "used. Make sure that Kelo is installed completely, with its PAM service "
                       "\"kelo\"."),
            "user verification is unavailable");
    case VerificationOutcome::undecided:
        throw Failure(
            FailureKind::notAllowed,
            translated("The system's check that it is you did not work, so the passkey was not "
                       "used. Please try again. If that does not help, see whether you can still "
                       "unlock your screen."),
            "user verification could not decide");
    case VerificationOutcome::failed:
        break;
    }
    throw Failure(
        FailureKind::notAllowed,
        translated("Kelo could not verify that it is you, so the passkey was not used. Please try "
                   "again."),
        "user verification failed");
}

} // namespace kelo::authenticator
