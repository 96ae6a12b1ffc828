#include "linux/authorization/LocalAuthenticator.h"

#include "authenticator/keys/KeyStores.h"
#include "authenticator/keys/SoftwareKeyStore.h"
#include "base/Failure.h"
#include "deployment/Deployment.h"
#include "linux/authorization/PasskeyFile.h"
#include "linux/authorization/keyring/SecretServiceWrappingKeySource.h"
#include "linux/authorization/verification/PamVerifier.h"
#include "linux/gobject/WorkerThread.h"
#include "linux/tpm/TpmKeyStore.h"
#include "posix/SystemClock.h"

#include <glib.h>

#include <array>
#include <string>
#include <utility>

namespace kelo::authorization {

namespace {

void note(const authenticator::CredentialStore& store, const platform::CredentialReport& report) {
    const bool accepted = report.verdict == platform::CredentialReport::Verdict::accepted;
    try {
        if (accepted)
            store.noteAccepted(report.relyingPartyIdentifier, report.credentialId);
        else
            store.noteRefused(report.relyingPartyIdentifier, report.credentialId);
        g_debug("passkey: the service has %s it", accepted ? "accepted" : "refused");
    } catch (const Failure& failure) {
        // Nothing is lost: a passkey more than needed stays in the file.
        g_warning("passkey: cannot note that the service has %s it: %s",
                  accepted ? "accepted" : "refused", failure.what());
    }
}

} // namespace

struct LocalAuthenticator::Storage {
    explicit Storage(authenticator::PasskeySheetFactory& sheets)
        : parts{associations, sheets, verifier, keys, credentials, worker, clock} {}

    const std::array<authenticator::Association, 1> associations{authenticator::Association{
        std::string(deployment::relyingPartyIdentifier), std::string(deployment::serviceOrigin)}};
    posix::SystemClock clock;
    authenticator::CredentialStore credentials{passkeyFile()};
    PamVerifier verifier{verificationHelperPath()};
    gobject::WorkerThread worker;
    // A separate thread, because a keyring may block until the user answers its prompt. Reading the
    // credential store must not wait for that.
    gobject::WorkerThread keyringWorker;
    std::shared_ptr<SecretServiceWrappingKeySource> keyring =
        std::make_shared<SecretServiceWrappingKeySource>();
    authenticator::SoftwareKeyStore software{keyring, keyringWorker};
    tpm::TpmKeyStore chip{tpm::chipOfThisComputer, keyring, keyringWorker};
    authenticator::KeyStores keys{software, chip};
    authenticator::AuthenticatorParts parts;
};

LocalAuthenticator::LocalAuthenticator(authenticator::PasskeySheetFactory& sheets)
    : sheets(sheets) {}

LocalAuthenticator::~LocalAuthenticator() = default;

const authenticator::AuthenticatorParts& LocalAuthenticator::parts() {
    if (!storage)
        storage = std::make_unique<Storage>(sheets);
    return storage->parts;
}

void LocalAuthenticator::begin(Cancellation ceremony) {
    if (const auto former = std::exchange(current, std::move(ceremony)))
        former->cancel();
}

void LocalAuthenticator::report(platform::CredentialReport report) {
    // The store's own worker runs one job after another, so the next ceremony finds it noted.
    parts().worker.perform(
        [store = parts().credentials, report = std::move(report)] { note(store, report); });
}

std::filesystem::path passkeyFile() {
    return std::filesystem::path(g_get_user_data_dir()) / "kelo" / "passkeys.sqlite";
}

} // namespace kelo::authorization
