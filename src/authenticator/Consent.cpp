#include "authenticator/Consent.h"

#include <utility>

namespace kelo::authenticator {

Consent::Consent(const Authenticator& authenticator, std::shared_ptr<platform::Window> anchor)
    : authenticator(authenticator), anchor(std::move(anchor)) {}

Consent::~Consent() = default;

Task<std::size_t> Consent::confirm(ConsentRequest request) {
    const std::size_t accounts = request.accountNames.size();
    sheet = authenticator.sheets.makeSheet(anchor);
    const std::optional<std::size_t> chosen = co_await sheet->confirm(std::move(request));
    if (!chosen || *chosen >= accounts)
        throwCancelled();
    co_return *chosen;
}

Task<void> Consent::verify() {
    const VerificationOutcome outcome = co_await authenticator.verifier.verify(*sheet);
    switch (outcome) {
    case VerificationOutcome::verified:
        co_return;
    case VerificationOutcome::cancelled:
        throwCancelled();
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

void Consent::throwCancelled() {
    throw Failure(FailureKind::cancelled, "The passkey request was cancelled.");
}

} // namespace kelo::authenticator
