#include "linux/authorization/PasskeyServices.h"

#include "authenticator/keys/SoftwareKeyStore.h"
#include "deployment/Deployment.h"
#include "linux/authorization/LinuxAuthorizationController.h"
#include "linux/authorization/keyring/SecretServiceWrappingKeySource.h"
#include "linux/authorization/verification/PamVerifier.h"
#include "linux/gobject/WorkerThread.h"
#include "posix/SystemClock.h"

#include <glib.h>

#include <array>
#include <string>
#include <utility>

namespace kelo::authorization {

/// Making these touches nothing yet; each does when it is first used.
struct PasskeyServices::Parts {
    explicit Parts(authenticator::PasskeySheetFactory& sheets)
        : authenticator{associations, sheets, verifier, keys, credentials, worker, clock} {}

    const std::array<authenticator::Association, 1> associations{authenticator::Association{
        std::string(deployment::relyingPartyIdentifier), std::string(deployment::serviceOrigin)}};
    posix::SystemClock clock;
    authenticator::CredentialStore credentials{passkeyFile()};
    PamVerifier verifier{verificationHelperPath()};
    // Reading a record must not wait until the user has answered a keyring's prompt.
    gobject::WorkerThread worker;
    gobject::WorkerThread keyringWorker;
    authenticator::SoftwareKeyStore keys{std::make_shared<SecretServiceWrappingKeySource>(),
                                         keyringWorker};
    authenticator::Authenticator authenticator;
};

PasskeyServices::PasskeyServices(authenticator::PasskeySheetFactory& sheets) : sheets(sheets) {}

PasskeyServices::~PasskeyServices() = default;

std::shared_ptr<platform::AuthorizationController>
PasskeyServices::makeController(std::vector<platform::AuthorizationRequest> requests) {
    return std::make_shared<LinuxAuthorizationController>(*this, std::move(requests));
}

const authenticator::Authenticator& PasskeyServices::authenticator() {
    if (!parts)
        parts = std::make_unique<Parts>(sheets);
    return parts->authenticator;
}

void PasskeyServices::begin(Cancellation ceremony) {
    if (const auto former = std::exchange(running, std::move(ceremony)))
        former->cancel();
}

std::filesystem::path passkeyFile() {
    return std::filesystem::path(g_get_user_data_dir()) / "kelo" / "passkeys.sqlite";
}

} // namespace kelo::authorization
