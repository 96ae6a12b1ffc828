#pragma once

#include "authenticator/consent/PasskeySheet.h"
#include "base/async/Task.h"

namespace kelo::authenticator {

enum class VerificationOutcome {
    verified,
    failed,      ///< wrong answers, or a verifier that died or talked nonsense
    cancelled,   ///< the user said no
    unavailable, ///< nothing on this machine can verify the user
};

/// Checks that the person at the machine is its user.
class UserVerifier {
public:
    virtual ~UserVerifier() = default;
    /// The conversation must live until the task ends or is dropped; a dropped task ends the check.
    virtual Task<VerificationOutcome> verify(VerificationConversation& conversation) = 0;
};

} // namespace kelo::authenticator
