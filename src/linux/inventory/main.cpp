#include "base/async/Spawn.h"
#include "bundle/ProgramPlace.h"
#include "linux/authorization/PasskeyFile.h"
#include "linux/authorization/keyring/KeyringState.h"
#include "linux/authorization/verification/PamVerifier.h"
#include "linux/gobject/GLibMainLoop.h"
#include "linux/inventory/Commands.h"
#include "linux/locale/UserLocale.h"
#include "linux/startup/OwnVariables.h"

#include <glib.h>

#include <iostream>
#include <optional>

namespace {

kelo::Task<void> run(const kelo::inventory::CommandParts& parts, std::span<const char* const> words,
                     std::optional<int>& status) {
    status = co_await kelo::inventory::runCommand(parts, words);
}

} // namespace

/// kelo-passkeys: the passkeys of this computer, for their owner.
int main(int count, char** words) {
    kelo::startup::quietChipLibrary();
    kelo::locale::followUserLocale();
    kelo::locale::findTranslations(kelo::bundle::installationPrefix(kelo::bundle::programPath()));
    kelo::gobject::GLibMainLoop loop;
    const kelo::MainLoop::Installation installation(loop);

    const kelo::authenticator::CredentialStore passkeys(kelo::authorization::passkeyFile());
    kelo::authorization::PamVerifier verifier(kelo::authorization::verificationHelperPath());
    kelo::inventory::Terminal terminal(std::cout);
    const kelo::inventory::CommandParts parts{
        passkeys,
        verifier,
        terminal,
        [] { return kelo::inventory::lookAround(); },
        kelo::authorization::keepWrappingKeyInOwnCollection,
        kelo::authorization::keepWrappingKeyInDefaultCollection,
        std::cout,
        std::cerr};
    const std::span<const char* const> all(words, static_cast<std::size_t>(count));
    std::optional<int> status;
    kelo::spawn(run(parts, all.subspan(all.empty() ? 0 : 1), status));
    while (!status)
        g_main_context_iteration(nullptr, TRUE);
    return *status;
}
