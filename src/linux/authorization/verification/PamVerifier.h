#pragma once

#include "authenticator/consent/UserVerifier.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kelo::authorization {

class HelperProcess;

/// Verifies the user with what the system's own log-in asks for (PAM), in the helper process
/// kelo-verify-user. The helper lives for one verification and is killed when that ends, is
/// cancelled or is dropped. One that dies, breaks the rules of the talk, or gives a result that is
/// not the answer to this run, has verified nobody.
class PamVerifier final : public authenticator::UserVerifier {
public:
    /// The extra environment for the helper is NAME=value.
    explicit PamVerifier(std::filesystem::path helper,
                         std::vector<std::string> extraEnvironment = {});

    Task<authenticator::VerificationOutcome>
    verify(authenticator::VerificationConversation& conversation) override;

private:
    std::filesystem::path helper;
    std::vector<std::string> extraEnvironment;
};

/// Where kelo-verify-user is: beside this program, or in the libexec folder of the tree that this
/// program was installed in, or else where the build would install it. Never a path that the
/// environment names.
std::filesystem::path verificationHelperPath();

} // namespace kelo::authorization
