#include "KeyringFixture.h"
#include "UnansweredPrompter.h"

#include "testing/rig/ProcessMemory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace kelo {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

namespace {

std::string hexadecimal(unsigned char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    return {digits[byte >> 4], digits[byte & 0xF]};
}

class KeyringTest : public KeyringFixture {
protected:
    std::string keyringText() const {
        std::ifstream stream(keyrings / "login.keyring");
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /// What tells the wrapping key in a keyring with these apart from others.
    std::string wrappingKeyAmong(const std::vector<Item>& items) {
        writeKeyring(items);
        startLocked();
        const std::string wrapped = probe({"create"});
        EXPECT_THAT(wrapped, MatchesRegex("[0-9a-f]{266}"));
        stopKeyring();
        return wrapped.substr(0, 18);
    }
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
    auto variables = probeEnvironment();
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
    const Child waiting({KELO_KEYRING_PROBE, "create-and-give-up"}, probeEnvironment());
    ASSERT_TRUE(prompter.waitUntilAsked());
    waiting.write("\n");
    EXPECT_EQ(waiting.readLine(), "given up");
    // The daemon is still there, with its prompt: dismissing that would have brought it down.
    ASSERT_TRUE(bus.waitForName("org.freedesktop.secrets"));
    EXPECT_TRUE(bus.ping("org.freedesktop.secrets"));
}

TEST_F(KeyringTest, StateIsToldWithoutAQuestion) {
    EXPECT_EQ(probe({"state"}), "absent");
    startLocked();
    EXPECT_EQ(probe({"state"}), "empty");
    ASSERT_TRUE(bus.makeKeyringWithoutPassword());
    EXPECT_EQ(probe({"state"}), "unlocked");
    ASSERT_TRUE(bus.lockKeyring());
    EXPECT_EQ(probe({"state"}), "locked");
}

TEST_F(KeyringTest, NobodyWaitsForTheStateOfOneThatHangsAfterAStop) {
    startUnlocked();
    daemon.suspend();
    const Child waiting({KELO_KEYRING_PROBE, "state-and-give-up"}, probeEnvironment());
    waiting.write("\n");
    EXPECT_EQ(waiting.readLine(), "given up");
    daemon.resume();
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
    EXPECT_THAT(probe({"create"}),
                HasSubstr("error: Your keyring did not keep or give the key that protects "
                          "your passkeys. Check that it is unlocked"));
    stopKeyring();
    startUnlocked();
    EXPECT_THAT(probe({"create"}), MatchesRegex("[0-9a-f]{266}"));
}

TEST_F(KeyringTest, OfSeveralWrappingKeysTheOldestCounts) {
    const Item older{std::string(64, '1'), 1'700'000'000};
    const Item newer{std::string(64, '2'), 1'700'000'005};
    const std::string wanted = wrappingKeyAmong({older});
    EXPECT_NE(wrappingKeyAmong({newer}), wanted);
    EXPECT_EQ(wrappingKeyAmong({older, newer}), wanted);
    EXPECT_EQ(wrappingKeyAmong({newer, older}), wanted);
}

TEST_F(KeyringTest, WrappingKeyIsForgottenAfterTheSignature) {
    std::string key, digits;
    for (int byte = 0; byte < 32; ++byte) {
        key += static_cast<char>(0x81 + 3 * byte);
        digits += hexadecimal(static_cast<unsigned char>(key.back()));
    }
    writeKeyring({{digits, 1}});
    startLocked();
    const std::string wrapped = probe({"create"});
    const Child child({KELO_KEYRING_PROBE, "sign-and-stay", wrapped}, probeEnvironment());
    ASSERT_EQ(child.readLine(), "signed");
    const auto placesOf = [&](const std::string& text) {
        return rig::findInMemory(child.identifier(), rig::DisguisedText::of(text));
    };
    EXPECT_THAT(placesOf(key), IsEmpty());
    EXPECT_THAT(placesOf(digits), IsEmpty());
    EXPECT_THAT(placesOf(wrapped), Not(IsEmpty())) << "what is there is found";
}

TEST_F(KeyringTest, AWrappingKeyMayBeInCapitals) {
    EXPECT_EQ(wrappingKeyAmong({{std::string(64, 'A'), 1}}),
              wrappingKeyAmong({{std::string(64, 'a'), 1}}));
}

TEST_F(KeyringTest, ASecretThatIsNoKeyIsSaidPlainlyAndStaysAsItIs) {
    for (const std::string& secret :
         {std::string("secret"), std::string(63, '1'), std::string(66, '1'),
          std::string(63, '1') + "g", "g" + std::string(63, '1')}) {
        writeKeyring({{secret, 1}});
        const std::string before = keyringText();
        startLocked();
        const std::string sentence =
            "error: The key that protects your passkeys is damaged in your keyring. Delete \"Key "
            "that protects the passkeys of Kelo\" there, sign in another way, then register a "
            "new passkey from the Account menu.";
        EXPECT_EQ(probe({"create"}), sentence) << secret;
        EXPECT_EQ(probe({"sign", "00"}), sentence) << secret;
        stopKeyring();
        EXPECT_EQ(keyringText(), before);
    }
}

TEST_F(KeyringTest, TheWrappingKeyIsKeptUnderItsNameAndPurpose) {
    writeKeyring({});
    startLocked();
    EXPECT_THAT(probe({"create"}), MatchesRegex("[0-9a-f]{266}"));
    stopKeyring();
    const std::string text = keyringText();
    EXPECT_THAT(text, HasSubstr("\ndisplay-name=Key that protects the passkeys of Kelo\n"));
    EXPECT_THAT(text, HasSubstr("\nname=purpose\ntype=string\nvalue=passkeys\n"));
    EXPECT_THAT(text,
                HasSubstr("\nname=xdg:schema\ntype=string\nvalue=app.kelo.Kelo.WrappingKey\n"));
    EXPECT_THAT(text, ContainsRegex("\nsecret=[0-9a-f]{64}\n"));
}

} // namespace kelo
