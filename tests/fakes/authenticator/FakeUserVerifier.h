#pragma once

#include "authenticator/consent/UserVerifier.h"
#include "fakes/authenticator/FakePasskeySheet.h"

namespace kelo::fakes {

class FakeUserVerifier final : public authenticator::UserVerifier {
public:
    explicit FakeUserVerifier(SheetScript& script) : script(script) {}

    Task<authenticator::VerificationOutcome>
    verify(authenticator::VerificationConversation& /*conversation*/) override {
        script.events.emplace_back("verify");
        co_return outcome;
    }

    authenticator::VerificationOutcome outcome = authenticator::VerificationOutcome::verified;

private:
    SheetScript& script;
};

} // namespace kelo::fakes
