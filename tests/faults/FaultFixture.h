#pragma once

#include "component/passkey/SessionBus.h"
#include "e2e/ProgramFixture.h"

#include <memory>
#include <string>
#include <sys/types.h>

namespace kelo::faults {

/// Somebody who has a passkey, before a fault: Kelo shows the login page. The session bus and the
/// keyring are the test's own, so that it can take them away; they are not those of the desktop.
class FaultFixture : public e2e::ProgramFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    /// On the session's bus, with the keyring that `userFolder` holds, unlocked.
    void startKeyring();
    void killKeyring();
    void startBus();
    void killBus();

    /// Starts the next Kelo once the pages of the former one are gone.
    void startAgain();
    /// Ends Kelo, starts it again and signs in with the passkey. Whatever happened before, that
    /// must go well.
    void expectNothingIsLost();
    /// From the login page to the home page.
    void signIn() const;
    /// Waits for either page, and signs out on the home page.
    void comeToTheLoginPage() const;
    void tryToSignIn() const;
    void signInAndRegister() const;
    bool seesHomePage() const;

    /// Waits for the process of this name below Kelo.
    pid_t awaitProcess(const std::string& name) const;
    /// Waits until it has ended or is about to be collected.
    void killAndAwaitEnd(pid_t process) const;

    const std::filesystem::path busFolder = folder.path() / "bus";
    std::unique_ptr<SessionBus> bus;
    std::unique_ptr<Child> keyring;
};

} // namespace kelo::faults
