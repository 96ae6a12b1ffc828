#pragma once

#include "authenticator/consent/UserVerifier.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kelo::authorization {

class HelperProcess;

/// Verifies the user with PAM, as the system's log-in does, in the helper process kelo-verify-user.
/// Each verification starts a helper and kills it when the verification ends or its task is
/// destroyed. If the helper crashes, violates the protocol or returns another run's nonce, the
/// verification fails.
class PamVerifier final : public authenticator::UserVerifier {
public:
    /// The extra environment (NAME=value) is for the helper.
    explicit PamVerifier(std::filesystem::path helper,
                         std::vector<std::string> extraEnvironment = {});

    Task<authenticator::VerificationOutcome>
    verify(authenticator::VerificationConversation& conversation) override;

private:
    std::filesystem::path helper;
    std::vector<std::string> extraEnvironment;
};

/// What a verification on this computer would begin with.
enum class VerificationMeans {
    complete,
    noHelper,  ///< kelo-verify-user is missing or does not start
    noService, ///< there is no PAM service for Kelo
};

/// Asks the helper, which verifies nobody for it. Blocks for as long as a small program takes.
VerificationMeans verificationMeans(const std::filesystem::path& helper);

/// The path of kelo-verify-user: beside this program, else in the libexec folder of the same
/// installation, else where the build would install it. The environment has no influence on it.
std::filesystem::path verificationHelperPath();

} // namespace kelo::authorization
