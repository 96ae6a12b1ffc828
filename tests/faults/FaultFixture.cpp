#include "faults/FaultFixture.h"

#include "testing/rig/ProcessTree.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace kelo::faults {

namespace {

namespace fs = std::filesystem;

/// The copy that the private desktop has made: the installed program may ask for a capability.
std::string keyringProgram() {
    const char* folder = std::getenv("KELO_PRIVATE_DESKTOP_FOLDER");
    if (!folder)
        throw std::runtime_error("Start this program through scripts/private-desktop.");
    return (fs::path(folder) / "gnome-keyring-daemon").string();
}

} // namespace

void FaultFixture::SetUp() {
    serviceState = folder.path() / "service.json";
    fs::create_directories(userFolder);
    startBus();
    startKeyring();
    startService();
    startKelo();
    user.awaitLoginPage();
    becomeOwnerOfPasskey(e2e::ada);
}

void FaultFixture::TearDown() {
    desktop().tree.callOffWaitsWhen({});
    ProgramFixture::TearDown();
    keyring.reset();
    bus.reset();
}

void FaultFixture::startBus() {
    fs::remove_all(busFolder);
    fs::create_directories(busFolder);
    bus = std::make_unique<SessionBus>(busFolder);
    environment["DBUS_SESSION_BUS_ADDRESS"] = bus->address();
    environment["AT_SPI_BUS_ADDRESS"] = desktop().bus.address();
}

void FaultFixture::killBus() {
    keyring.reset();
    bus.reset();
}

void FaultFixture::startKeyring() {
    const std::string home = (userFolder / "keyring").string();
    const std::string sockets = (folder.path() / "keyring-sockets").string();
    fs::remove_all(sockets);
    fs::create_directories(sockets);
    fs::create_directories(home);
    keyring = std::make_unique<Child>(
        std::vector<std::string>{keyringProgram(), "--foreground", "--components=secrets",
                                 "--unlock"},
        std::vector<std::string>{"DBUS_SESSION_BUS_ADDRESS=" + bus->address(), "HOME=" + home,
                                 "XDG_DATA_HOME=" + home, "XDG_RUNTIME_DIR=" + sockets});
    keyring->write("password of the keyring");
    keyring->closeInput();
    if (!bus->waitForName("org.freedesktop.secrets"))
        throw std::runtime_error("The keyring did not start.");
}

void FaultFixture::killKeyring() {
    keyring.reset();
    bus->waitForNoName("org.freedesktop.secrets");
}

void FaultFixture::startAgain() {
    endKelo();
    startKelo();
}

bool FaultFixture::seesHomePage() const {
    return desktop().tree.find(rig::pageButton("Sign out")).has_value();
}

void FaultFixture::comeToTheLoginPage() const {
    desktop().tree.awaitThat("a page of the service is shown", [&] {
        return seesHomePage() || desktop().tree.find(rig::pageField("Email"));
    });
    if (seesHomePage())
        user.signOut();
    else
        user.awaitLoginPage();
}

void FaultFixture::signIn() const {
    user.pressSignInWithPasskey();
    user.confirmSheet(desktop().loginPassword);
    user.awaitSignedIn(e2e::ada.firstName);
}

void FaultFixture::signInAndRegister() const {
    signIn();
    user.chooseRegister();
    user.answerPrompt(e2e::ada.password);
}

void FaultFixture::expectNothingIsLost() {
    startAgain();
    comeToTheLoginPage();
    tryToSignIn();
    if (!seesHomePage()) {
        // The service has never seen the newest passkey; the next try takes the one before.
        user.awaitError("Passkey was not accepted.");
        tryToSignIn();
    }
    user.awaitSignedIn(e2e::ada.firstName);
}

void FaultFixture::tryToSignIn() const {
    user.pressSignInWithPasskey();
    user.confirmSheet(desktop().loginPassword);
    desktop().tree.awaitThat("the service has answered", [&] {
        return seesHomePage() || desktop().tree.find(rig::alert("Passkey was not accepted."));
    });
}

pid_t FaultFixture::awaitProcess(const std::string& name) const {
    pid_t found = -1;
    desktop().tree.awaitThat("a process " + name + " runs", [&] {
        for (const pid_t process : rig::processTree(kelo->identifier())) {
            if (rig::programName(process) == name.substr(0, 15))
                found = process;
        }
        return found > 0;
    });
    return found;
}

void FaultFixture::killAndAwaitEnd(pid_t process) const {
    kill(process, SIGKILL);
    desktop().tree.awaitThat("the process has ended", [&] {
        const auto running = rig::processTree(kelo->identifier());
        return std::ranges::find(running, process) == running.end() ||
               rig::residentSetSize(process) == 0;
    });
}

} // namespace kelo::faults
