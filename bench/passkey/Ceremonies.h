#pragma once

#include "authenticator/AuthenticatorParts.h"
#include "linux/authorization/keyring/SecretServiceWrappingKeySource.h"
#include "linux/authorization/verification/PamVerifier.h"
#include "linux/gobject/GLibMainLoop.h"
#include "linux/gobject/WorkerThread.h"
#include "linux/tpm/TpmKeyStore.h"
#include "posix/SystemClock.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace kelo::bench {

using Milliseconds = std::chrono::duration<double, std::milli>;

/// The authenticator as the program has it, with its keyring, its helper and PAM, and a sheet whose
/// user chooses "Continue" and types the password at once. Main thread.
class Ceremonies {
public:
    /// transport: of the chip, as its library's loader names it; keys are made in software if no
    /// chip answers there.
    Ceremonies(const std::string& transport, std::string password,
               const std::filesystem::path& file);
    ~Ceremonies();
    Ceremonies(const Ceremonies&) = delete;
    Ceremonies& operator=(const Ceremonies&) = delete;

    /// How long these take. The first four do not ask the user; the ceremonies are timed from
    /// "Continue" to the reply. Throw std::runtime_error if they fail.
    Milliseconds makeKey();
    Milliseconds sign();
    Milliseconds verifyUser();
    Milliseconds registration();
    Milliseconds signIn();

    /// The longest that the main thread did not come back to its loop since this was last asked.
    Milliseconds longestPause();

private:
    class QuickSheet;
    class QuickSheets;

    Milliseconds timed(const std::function<Task<void>()>& begin);

    gobject::GLibMainLoop loop;
    MainLoop::Installation installation{loop};
    std::unique_ptr<QuickSheets> sheets;
    const std::array<authenticator::Association, 1> associations{
        authenticator::Association{"localhost", "https://localhost"}};
    posix::SystemClock clock;
    authenticator::CredentialStore credentials;
    authorization::PamVerifier verifier{authorization::verificationHelperPath()};
    gobject::WorkerThread worker;
    gobject::WorkerThread keyringWorker;
    std::shared_ptr<authorization::SecretServiceWrappingKeySource> keyring =
        std::make_shared<authorization::SecretServiceWrappingKeySource>();
    authenticator::SoftwareKeyStore software{keyring, keyringWorker};
    tpm::TpmKeyStore chip;
    authenticator::KeyStores keys{software, chip};
    authenticator::CreatedKey lastKey;
    std::chrono::steady_clock::time_point continued;
    std::chrono::steady_clock::time_point lastTurn;
    Milliseconds pause{};
};

} // namespace kelo::bench
