#include "SessionBus.h"
#include "UnansweredPrompter.h"
#include "component/MainLoopScope.h"

#include "fakes/authenticator/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// The real keyring daemon on a bus of its own; each use of it is a process of its own.

namespace kelo {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

class KeyringTest : public testing::Test {
protected:
    std::vector<std::string> environment() const {
        const std::string home = folder.path().string();
        return {"DBUS_SESSION_BUS_ADDRESS=" + bus.address(),
                "HOME=" + home,
                "XDG_DATA_HOME=" + home + "/data",
                "XDG_RUNTIME_DIR=" + home,
                "XDG_CONFIG_HOME=" + home,
                "XDG_CACHE_HOME=" + home};
    }
    void startKeyring(const std::vector<std::string>& options) {
        std::vector<std::string> command = {"gnome-keyring-daemon", "--foreground",
                                            "--components=secrets"};
        command.insert(command.end(), options.begin(), options.end());
        daemon = Child(command, environment());
    }
    void startUnlocked() {
        startKeyring({"--unlock"});
        daemon.write("password");
        daemon.closeInput();
        ASSERT_TRUE(bus.waitForName("org.freedesktop.secrets"));
    }
    void startLocked() {
        startKeyring({});
        ASSERT_TRUE(bus.waitForName("org.freedesktop.secrets"));
    }
    void stopKeyring() {
        daemon.kill();
        ASSERT_TRUE(bus.waitForNoName("org.freedesktop.secrets"));
    }
    std::string probe(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), KELO_KEYRING_PROBE);
        return Child(arguments, environment()).readLine();
    }

    MainLoopScope loop;
    fakes::TemporaryFolder folder;
    SessionBus bus{folder.path()};
    Child daemon;
};

} // namespace

TEST_F(KeyringTest, AKeyMadeInOneProcessSignsInAnother) {
    startUnlocked();
    const std::string wrapped = probe({"create"});
    EXPECT_THAT(wrapped, MatchesRegex("[0-9a-f]{266}"));
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
}

TEST_F(KeyringTest, TheSecondKeyLivesUnderTheSameWrappingKey) {
    startUnlocked();
    const std::string one = probe({"create"});
    const std::string two = probe({"create"});
    EXPECT_NE(one, two);
    EXPECT_EQ(one.substr(0, 18), two.substr(0, 18));
    EXPECT_EQ(probe({"sign", one}), "signed");
    EXPECT_EQ(probe({"sign", two}), "signed");
}

TEST_F(KeyringTest, AKeySignsAfterTheKeyringWasRestarted) {
    startUnlocked();
    const std::string wrapped = probe({"create"});
    stopKeyring();
    startUnlocked();
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
}

TEST_F(KeyringTest, NoKeyringIsSaidPlainly) {
    const std::string sentence =
        "error: No keyring is running, and without one a passkey cannot be kept "
        "safe. Start your desktop's keyring or password manager and try again.";
    EXPECT_EQ(probe({"create"}), sentence);
    EXPECT_EQ(probe({"sign", "00"}), sentence);
}

TEST_F(KeyringTest, NoSessionBusIsSaidPlainly) {
    auto variables = environment();
    variables.front() = "DBUS_SESSION_BUS_ADDRESS=unix:path=" + (folder.path() / "no-bus").string();
    EXPECT_THAT(Child({KELO_KEYRING_PROBE, "create"}, variables).readLine(),
                StartsWith("error: No keyring is running"));
}

TEST_F(KeyringTest, AReplacedKeyringIsSaidPlainlyAndStaysAsItIs) {
    startUnlocked();
    const std::string wrapped = probe({"create"});
    stopKeyring();
    std::filesystem::remove_all(folder.path() / "data");
    startUnlocked();
    const std::string sentence =
        "error: This passkey can no longer be used, because your keyring no "
        "longer holds the key that protects it.";
    EXPECT_THAT(probe({"sign", wrapped}), StartsWith(sentence));
    EXPECT_THAT(probe({"create"}), MatchesRegex("[0-9a-f]{266}"));
    EXPECT_THAT(probe({"sign", wrapped}), StartsWith(sentence)) << "another wrapping key";
}

TEST_F(KeyringTest, ALockedKeyringWhoseUnlockingIsDismissedIsSaidPlainly) {
    startUnlocked();
    const std::string wrapped = probe({"create"});
    stopKeyring();
    startLocked();
    // Nobody is on this bus to show the keyring's prompt, which the keyring takes for a dismissal.
    const std::string sentence =
        "error: Your keyring is locked, and a passkey needs it. Try again and "
        "unlock the keyring when it asks.";
    EXPECT_EQ(probe({"sign", wrapped}), sentence);
    EXPECT_EQ(probe({"create"}), sentence);
    stopKeyring();
    startUnlocked();
    EXPECT_EQ(probe({"sign", wrapped}), "signed") << "the keyring stayed as it was";
}

TEST_F(KeyringTest, ARequestThatIsGivenUpDoesNotWaitForTheUnlockPrompt) {
    startUnlocked();
    probe({"create"});
    stopKeyring();
    const UnansweredPrompter prompter(bus.connection());
    startLocked();
    const Child waiting({KELO_KEYRING_PROBE, "create-and-give-up"}, environment());
    ASSERT_TRUE(prompter.waitUntilAsked());
    waiting.write("\n");
    EXPECT_EQ(waiting.readLine(), "given up");
    // The daemon is still there, with its prompt: dismissing that would have brought it down.
    ASSERT_TRUE(bus.waitForName("org.freedesktop.secrets"));
    EXPECT_TRUE(bus.ping("org.freedesktop.secrets"));
}

TEST_F(KeyringTest, ALockedKeyringIsUnlockedAndUsed) {
    startLocked();
    ASSERT_TRUE(bus.makeKeyringWithoutPassword());
    const std::string wrapped = probe({"create"});
    EXPECT_THAT(wrapped, MatchesRegex("[0-9a-f]{266}"));
    stopKeyring();
    startLocked();
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
    stopKeyring();
    startLocked();
    EXPECT_EQ(probe({"create"}).substr(0, 18), wrapped.substr(0, 18));
}

TEST_F(KeyringTest, AKeyringThatMayNotBeMadeIsSaidPlainly) {
    startLocked(); // and empty: the keyring would ask for a password for a new collection
    EXPECT_THAT(probe({"create"}), HasSubstr("error: Your keyring did not keep"));
    stopKeyring();
    startUnlocked();
    EXPECT_THAT(probe({"create"}), MatchesRegex("[0-9a-f]{266}"));
}

} // namespace kelo
