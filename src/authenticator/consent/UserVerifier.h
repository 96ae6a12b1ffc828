#pragma once

#include "authenticator/consent/PasskeySheet.h"
#include "base/async/Task.h"

namespace kelo::authenticator {

enum class VerificationOutcome {
    verified,
    failed,      ///< wrong answers, or the verifier crashed or broke its protocol
    cancelled,   ///< the user cancelled
    undecided,   ///< the check itself did not work, for instance because a server does not answer
    unavailable, ///< this computer has no means to verify anybody
};

/// Verifies that the person at the computer is the user of this account.
class UserVerifier {
public:
    virtual ~UserVerifier() = default;
    /// The conversation must outlive the task. Destroying the task ends the verification.
    virtual Task<VerificationOutcome> verify(VerificationConversation& conversation) = 0;
};

} // namespace kelo::authenticator
