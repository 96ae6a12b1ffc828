#include "SessionBus.h"
#include "component/ScopedMainLoop.h"

#include "base/Failure.h"
#include "fakes/authenticator/FakePasskeySheet.h"
#include "linux/authorization/PasskeyServices.h"
#include "platform/Application.h"
#include "testing/TemporaryFolder.h"
#include "unit/authenticator/IndependentVerifier.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

// The whole authenticator as the program has it: SQLite, the keyring daemon, the helper and libpam.
// Only the sheet is a stand-in, and libfido2 is the service.

namespace kelo {

namespace {

using testing::ElementsAre;

/// What GLib and GIO read once in a process: the data folder and the session bus. The helper's
/// PAM module gets its passwords through the same environment.
class Surroundings {
public:
    Surroundings() {
        const std::string home = folder.path();
        daemon.write("password");
        daemon.closeInput();
        ScopedMainLoop loop;
        bus.waitForName("org.freedesktop.secrets");
        ::setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
        ::setenv("XDG_DATA_HOME", (home + "/data").c_str(), 1);

        const std::string passwords = home + "/passwords";
        std::ofstream(passwords) << ::getpwuid(::getuid())->pw_name << ":open sesame:kelo\n";
        ::setenv("PAM_MATRIX_PASSWD", passwords.c_str(), 1);
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
#endif
    }

    std::filesystem::path file() const {
        return folder.path() / "data" / "kelo" / "passkeys.sqlite";
    }

private:
    test::TemporaryFolder folder;
    SessionBus bus{folder.path()};
    Child daemon{{"gnome-keyring-daemon", "--foreground", "--components=secrets", "--unlock"},
                 {"DBUS_SESSION_BUS_ADDRESS=" + bus.address(), "HOME=" + folder.path().string(),
                  "XDG_DATA_HOME=" + folder.path().string(),
                  "XDG_RUNTIME_DIR=" + folder.path().string()}};
};

class Listener final : public platform::AuthorizationControllerDelegate {
public:
    void didCompleteWithAuthorization(platform::AuthorizationController&,
                                      platform::Authorization outcome) override {
        authorization = std::move(outcome);
    }
    void didCompleteWithError(platform::AuthorizationController&,
                              std::exception_ptr failure) override {
        try {
            std::rethrow_exception(failure);
        } catch (const Failure& known) {
            error = known;
        }
    }
    std::optional<platform::Authorization> authorization;
    std::optional<Failure> error;
};

class PasskeyRoad : public testing::Test {
protected:
    void SetUp() override {
        if (std::filesystem::exists("/etc/pam.d/kelo"))
            GTEST_SKIP() << "Kelo is installed here, and its PAM service goes before the test's.";
    }
    ~PasskeyRoad() override {
        dropSpawnedTasks();
        std::filesystem::remove(surroundings().file());
    }
    static Surroundings& surroundings() {
        static Surroundings all;
        return all;
    }
    std::shared_ptr<Listener> perform(platform::AuthorizationRequest request) {
        auto listener = std::make_shared<Listener>();
        std::vector<platform::AuthorizationRequest> requests;
        requests.push_back(std::move(request));
        const auto controller = services.makeController(std::move(requests));
        controller->setDelegate(listener);
        controller->performRequests();
        EXPECT_TRUE(ScopedMainLoop::runUntil(
            [&] { return listener->authorization.has_value() || listener->error.has_value(); }));
        return listener;
    }
    std::optional<platform::PlatformRegistrationCredential> registerPasskey() {
        const platform::PlatformPublicKeyCredentialProvider provider("localhost");
        const auto ended = perform(provider.createCredentialRegistrationRequest(
            bytesOf("creation challenge"), "zoe", bytesOf("user-1")));
        if (!ended->authorization)
            return std::nullopt;
        return std::get<platform::PlatformRegistrationCredential>(ended->authorization->credential);
    }
    std::shared_ptr<Listener> signIn() {
        const platform::PlatformPublicKeyCredentialProvider provider("localhost");
        return perform(provider.createCredentialAssertionRequest(bytesOf("assertion challenge")));
    }

    Surroundings& all = surroundings();
    ScopedMainLoop loop;
    fakes::SheetScript person;
    fakes::FakePasskeySheetFactory sheets{person};
    authorization::PasskeyServices services{sheets};
};

} // namespace

TEST_F(PasskeyRoad, RegistersAndSignsIn) {
    person.answers = {"open sesame", "wrong", "open sesame"};
    const auto registered = registerPasskey();
    ASSERT_TRUE(registered);
    const auto verified = verifyRegistration(*registered, "localhost");
    ASSERT_TRUE(verified);
    EXPECT_EQ(verified->flags, 0x45);
    const auto signedIn = signIn();
    ASSERT_TRUE(signedIn->authorization);
    const auto& credential =
        std::get<platform::PlatformAssertionCredential>(signedIn->authorization->credential);
    EXPECT_TRUE(verifyAssertion(credential, verified->publicKey, "localhost", true));
    EXPECT_THAT(person.words, ElementsAre("? Password: ", "? Password: ",
                                          "e Wrong password. Try again.", "? Password: "));
}

TEST_F(PasskeyRoad, WrongPasswordsKeepNoPasskey) {
    person.answers = {"one", "two", "three"};
    EXPECT_FALSE(registerPasskey());
    EXPECT_FALSE(std::filesystem::exists(all.file()));
}

TEST_F(PasskeyRoad, WrongPasswordsSignNothing) {
    person.answers = {"open sesame", "one", "two", "three"};
    ASSERT_TRUE(registerPasskey());
    const auto signedIn = signIn();
    ASSERT_TRUE(signedIn->error);
    EXPECT_EQ(signedIn->error->kind(), FailureKind::notAllowed);
}

TEST_F(PasskeyRoad, CancelAtThePasswordIsThePlatformsCancellation) {
    person.answers = {"open sesame"};
    ASSERT_TRUE(registerPasskey());
    const auto signedIn = signIn();
    ASSERT_TRUE(signedIn->error);
    EXPECT_EQ(signedIn->error->kind(), FailureKind::cancelled);
    EXPECT_EQ(signedIn->error->localizedDescription(), "The passkey request was cancelled.");
}

} // namespace kelo
