#pragma once

#include "authenticator/PasskeySheet.h"
#include "platform/Task.h"

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
    virtual platform::Task<VerificationOutcome> verify(VerificationConversation& conversation) = 0;
};

} // namespace kelo::authenticator
