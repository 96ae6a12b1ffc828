#pragma once

#include "authenticator/AuthenticatorParts.h"
#include "base/async/Cancellation.h"
#include "base/async/Task.h"

#include <memory>
#include <optional>

namespace kelo::authenticator {

/// What becomes of a ceremony on a computer that has no means to verify its user.
enum class VerificationNeed {
    required,  ///< it fails
    preferred, ///< it goes on, and does not claim that the user was verified
};

/// The user's part of a ceremony (WebAuthn, "authorization gesture"): consent and user
/// verification, on one passkey sheet. The destructor closes the sheet. If the user refuses or
/// fails, the tasks throw a Failure of kind cancelled or notAllowed.
class AuthorizationGesture {
public:
    /// Opens no sheet yet. The anchor may be null. The parts must outlive this.
    AuthorizationGesture(const AuthenticatorParts& parts, std::shared_ptr<platform::Window> anchor);
    ~AuthorizationGesture();
    AuthorizationGesture(const AuthorizationGesture&) = delete;
    AuthorizationGesture& operator=(const AuthorizationGesture&) = delete;

    /// Opens the sheet and asks for consent. Returns the index of the chosen account.
    Task<std::size_t> confirm(ConsentRequest request);

    /// Verifies the user on the open sheet. Call it after confirm(). Returns true if the user was
    /// verified; false only if this computer has no means to and the need is "preferred". A
    /// verification that does not succeed throws in either case, so that nobody gets past it by
    /// making it fail.
    Task<bool> verify(VerificationNeed need);

    /// The result of the task. Throws requestCancelled() if the user cancels on the open sheet
    /// before the task ends. Call it after confirm().
    template <typename T>
    Task<T> unlessCancelled(Task<T> task) {
        const Cancellation cancellation;
        sheet->onCancel([cancellation] { cancellation.cancel(); });
        std::optional<T> result = co_await untilCancelled(cancellation, std::move(task));
        sheet->onCancel(nullptr);
        if (!result)
            throw requestCancelled();
        co_return std::move(*result);
    }

private:
    const AuthenticatorParts& parts;
    std::shared_ptr<platform::Window> anchor;
    std::unique_ptr<PasskeySheet> sheet;
};

} // namespace kelo::authenticator
