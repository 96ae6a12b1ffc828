#include "KeyringFixture.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

namespace kelo {

using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

/// Keyrings on disk are encrypted, but the names of files and of their keyrings are not.
class OwnKeyring : public KeyringFixture {
protected:
    bool hasOwnKeyring() const {
        return std::filesystem::exists(keyrings / "Passkeys_of_Kelo.keyring");
    }
    /// A passkey's key, wrapped, with the wrapping key in a keyring of its own.
    std::string makeGuardedKey() {
        startUnlocked();
        const std::string wrapped = probe({"create"});
        EXPECT_THAT(wrapped, MatchesRegex("[0-9a-f]{266}"));
        moveToOwn();
        return wrapped;
    }
};

TEST_F(OwnKeyring, AsksAtEachUse) {
    const std::string wrapped = makeGuardedKey();
    EXPECT_TRUE(hasOwnKeyring());
    EXPECT_EQ(probe({"state"}), "own");
    const Child user = userWho({"answer", "of its own"});
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
    EXPECT_EQ(probe({"create"}).substr(0, 18), wrapped.substr(0, 18));
    EXPECT_EQ(probe({"state"}), "own");
    EXPECT_EQ(promptsOf(user), "3");
}

TEST_F(OwnKeyring, GivesNothingWithoutItsPassword) {
    const std::string wrapped = makeGuardedKey();
    // The other keyring is still unlocked, as it is while the user is logged in.
    const Child user = userWho({"refuse"});
    EXPECT_EQ(probe({"sign", wrapped}),
              "error: Your keyring is locked, and a passkey needs it. Try "
              "again and unlock the keyring when it asks.");
    EXPECT_EQ(promptsOf(user), "1");
}

TEST_F(OwnKeyring, IsMadeBeforeTheFirstPasskeyToo) {
    startUnlocked();
    moveToOwn();
    EXPECT_EQ(probe({"state"}), "own");
    const Child user = userWho({"answer", "of its own"});
    const std::string wrapped = probe({"create"});
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
}

TEST_F(OwnKeyring, RefusedOneLeavesTheKeyWhereItIs) {
    startUnlocked();
    const std::string wrapped = probe({"create"});
    const Child user = userWho({"refuse"});
    EXPECT_EQ(probe({"keep-in-own"}),
              "error: Nothing was changed, because your keyring has made no keyring for Kelo. Try "
              "again and choose a password when it asks.");
    EXPECT_EQ(promptsOf(user), "1");
    EXPECT_EQ(probe({"state"}), "unlocked");
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
}

TEST_F(OwnKeyring, GivesItsKeyBack) {
    const std::string wrapped = makeGuardedKey();
    const Child user = userWho({"answer", "of its own"});
    EXPECT_EQ(probe({"keep-in-default"}), "moved");
    EXPECT_EQ(promptsOf(user), "1");
    EXPECT_FALSE(hasOwnKeyring());
    EXPECT_EQ(probe({"state"}), "unlocked");
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
    EXPECT_EQ(probe({"keep-in-default"}), "moved") << "as it is already";
}

TEST_F(OwnKeyring, AskedForTwiceAsksOnce) {
    makeGuardedKey();
    const Child user = userWho({"refuse"});
    EXPECT_EQ(probe({"keep-in-own"}), "moved");
    EXPECT_EQ(promptsOf(user), "0");
}

TEST_F(OwnKeyring, MoveThatWasInterruptedIsFinished) {
    startUnlocked();
    const std::string wrapped = probe({"create"});
    std::filesystem::copy(keyrings, folder.path() / "before");
    moveToOwn();
    stopKeyring();
    // As if the computer had lost power before the key was removed from where it had been.
    std::filesystem::copy(folder.path() / "before", keyrings,
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::overwrite_existing);
    startUnlocked();
    const Child user = userWho({"answer", "of its own"});
    EXPECT_EQ(probe({"keep-in-own"}), "moved");
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
    EXPECT_EQ(promptsOf(user), "2");
    std::filesystem::remove(keyrings / "Passkeys_of_Kelo.keyring");
    stopKeyring();
    startUnlocked();
    EXPECT_THAT(probe({"sign", wrapped}), HasSubstr("no longer holds the key"))
        << "nowhere else is a copy";
}

TEST_F(OwnKeyring, EmptyOneIsAskedForNothingUntilTheKeyIsMoved) {
    startUnlocked();
    const std::string wrapped = probe({"create"});
    // As a move leaves it that was interrupted before it had moved anything.
    ASSERT_NE(bus.makeCollection("Passkeys of Kelo"), "");
    EXPECT_EQ(probe({"state"}), "unlocked");
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
    EXPECT_EQ(probe({"keep-in-own"}), "moved");
    EXPECT_EQ(probe({"state"}), "own");
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
}

TEST_F(OwnKeyring, KeyOfOtherPasskeysStaysWhereItIs) {
    makeGuardedKey();
    stopKeyring();
    std::filesystem::remove(keyrings / "login.keyring");
    writeKeyring({{std::string(64, 'b'), 1}});
    startLocked();
    const Child user = userWho({"answer", "of its own"});
    EXPECT_EQ(probe({"keep-in-own"}), "moved");
    std::ifstream stream(keyrings / "login.keyring");
    EXPECT_THAT(std::string(std::istreambuf_iterator<char>(stream), {}),
                HasSubstr("secret=" + std::string(64, 'b')));
}

TEST_F(OwnKeyring, SurvivesALoginAndStaysLocked) {
    const std::string wrapped = makeGuardedKey();
    stopKeyring();
    startUnlocked();
    EXPECT_EQ(probe({"state"}), "own");
    const Child user = userWho({"answer", "of its own"});
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
    EXPECT_EQ(promptsOf(user), "1");
}

TEST_F(OwnKeyring, KeyringOfTheLoginIsNotLocked) {
    startUnlocked();
    const std::string wrapped = probe({"create"});
    EXPECT_EQ(probe({"sign", wrapped}), "signed");
    EXPECT_EQ(probe({"state"}), "unlocked");
}

TEST_F(OwnKeyring, IsNeverTheDefaultOneWhateverItsName) {
    startLocked();
    ASSERT_TRUE(bus.makeKeyringWithoutPassword("Passkeys of Kelo"));
    EXPECT_THAT(probe({"create"}), MatchesRegex("[0-9a-f]{266}"));
    EXPECT_EQ(probe({"state"}), "unlocked");
}

} // namespace

} // namespace kelo
