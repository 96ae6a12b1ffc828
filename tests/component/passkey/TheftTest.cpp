#include "KeyringFixture.h"
#include "component/tpm/SimulatedChip.h"
#include "unit/authenticator/Hex.h"
#include "unit/authenticator/Records.h"

#include "authenticator/keys/P256Key.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <unistd.h>

namespace kelo {

using testing::StartsWith;

namespace {

/// A program of the same user, while that user is logged in. SECURITY.md says what it can do.
class Theft : public KeyringFixture {
protected:
    /// Keeps a passkey of this private key in the file, as Kelo does.
    void keep(const std::string& wrapped) const {
        auto passkey = record("one", "user");
        passkey.wrappedPrivateKey = fromHex(wrapped);
        authenticator::CredentialStore(file).save(passkey);
    }
    std::string steal() const {
        return Child({KELO_THIEF, file.string()}, environment()).readLine();
    }

    const std::filesystem::path file = folder.path() / "kelo" / "passkeys.sqlite";
};

TEST_F(Theft, OfAKeyInSoftwareSucceeds) {
    startUnlocked();
    const std::string wrapped = probe({"create"});
    keep(wrapped);
    const Bytes stolen = fromHex(steal());
    ASSERT_EQ(stolen.size(), 32U);
    authenticator::SecretBytes scalar(stolen.size());
    std::ranges::copy(stolen, scalar.data());
    const auto key = authenticator::P256Key::fromScalar(scalar);
    ASSERT_TRUE(key);
    // Where the format has the public key.
    EXPECT_EQ(toHex(key->publicKey().x) + toHex(key->publicKey().y), wrapped.substr(18, 128));
}

TEST_F(Theft, OfAKeyInTheChipFails) {
    startUnlocked();
    const tests::SimulatedChip chip;
    const std::string wrapped = probe({"create-in-chip", chip.transport()});
    keep(wrapped);
    EXPECT_EQ(steal(), "no private key");
    // All that can be carried away, the file and what the keyring holds, signs on no other
    // computer.
    const tests::SimulatedChip other;
    EXPECT_EQ(probe({"sign-in-chip", chip.transport(), wrapped}), "signed");
    EXPECT_THAT(
        probe({"sign-in-chip", other.transport(), wrapped}),
        StartsWith(
            "error: This passkey can no longer be used, because this computer's security chip"));
}

TEST_F(Theft, OfAKeyBehindAKeyringOfItsOwnFailsUnlessTheUserTypesItsPassword) {
    startUnlocked();
    keep(probe({"create"}));
    moveToOwn();
    {
        const Child user = userWho({"refuse"});
        EXPECT_EQ(steal(), "no wrapping key");
        EXPECT_EQ(promptsOf(user), "1") << "the user sees that something asks";
    }
    const Child user = userWho({"answer", "of its own"});
    EXPECT_EQ(steal().size(), 64U);
}

TEST_F(Theft, OfTheFilesAloneFails) {
    startUnlocked();
    keep(probe({"create"}));
    stopKeyring();
    startLocked();
    EXPECT_EQ(steal(), "no wrapping key");
}

TEST_F(Theft, OfTheFilesAloneSucceedsIfTheKeyringHasNoPassword) {
    startLocked();
    ASSERT_TRUE(bus.makeKeyringWithoutPassword());
    keep(probe({"create"}));
    stopKeyring();
    startLocked();
    EXPECT_EQ(steal().size(), 64U);
}

TEST_F(Theft, ByAnotherUserFails) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "Only root can become somebody else.";
    startUnlocked();
    keep(probe({"create"}));
    // Kelo's own folder is closed to others, also where the folders above it are not.
    std::filesystem::permissions(folder.path(), std::filesystem::perms::others_exec,
                                 std::filesystem::perm_options::add);
    const std::string question = "test -r '" + file.string() +
                                 "' && echo yes || echo no; gdbus call --address '" +
                                 bus.address() +
                                 "' --dest org.freedesktop.secrets --object-path / "
                                 "--method org.freedesktop.DBus.Peer.Ping || echo refused";
    const Child owner({"sh", "-c", question}, {});
    EXPECT_EQ(owner.readLine(), "yes");
    EXPECT_EQ(owner.readLine(), "()");
    const Child other(
        {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "sh", "-c", question}, {});
    EXPECT_EQ(other.readLine(), "no");
    EXPECT_EQ(other.readLine(), "refused");
}

} // namespace

} // namespace kelo
