#include "component/tpm/ChipFixture.h"

#include "authenticator/keys/Cryptography.h"
#include "authenticator/keys/OpenSslPointer.h"
#include "linux/tpm/TpmKey.h"

#include <openssl/ec.h>
#include <openssl/evp.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace kelo::tests {
namespace {

using namespace authenticator;

/// Whether OpenSSL, which knows nothing of chips, accepts the signature.
bool isSignatureOf(const Bytes& signature, const Bytes& digest, const webauthn::PublicKey& key) {
    Bytes point{0x04};
    point.insert(point.end(), key.x.begin(), key.x.end());
    point.insert(point.end(), key.y.begin(), key.y.end());
    const OpenSslPointer<EVP_PKEY, EVP_PKEY_free> curve(EVP_EC_gen("prime256v1"));
    if (EVP_PKEY_set1_encoded_public_key(curve.get(), point.data(), point.size()) != 1)
        return false;
    const OpenSslPointer<EVP_PKEY_CTX, EVP_PKEY_CTX_free> context(
        EVP_PKEY_CTX_new(curve.get(), nullptr));
    return EVP_PKEY_verify_init(context.get()) == 1 &&
           EVP_PKEY_verify(context.get(), signature.data(), signature.size(), digest.data(),
                           digest.size()) == 1;
}

class TpmKeyStore : public ChipFixture {};

TEST_F(TpmKeyStore, SignsWithTheKeyItMade) {
    const CreatedKey key = make();
    for (int round = 0; round < 3; ++round) {
        const auto signature = sign(key);
        ASSERT_TRUE(signature->value) << signature->error->what();
        EXPECT_TRUE(isSignatureOf(*signature->value, digest, key.publicKey));
        EXPECT_FALSE(isSignatureOf(*signature->value, Bytes(32, 0x5B), key.publicKey));
    }
}

TEST_F(TpmKeyStore, EveryKeyIsAnother) {
    const CreatedKey one = make();
    const CreatedKey other = make();
    EXPECT_FALSE(one.publicKey == other.publicKey);
    EXPECT_FALSE(isSignatureOf(*sign(one)->value, digest, other.publicKey));
}

TEST_F(TpmKeyStore, KeySurvivesARestartOfTheComputer) {
    const CreatedKey key = make();
    chip.cutPower();
    chip.powerOn();
    const auto signature = sign(key);
    ASSERT_TRUE(signature->value) << signature->error->what();
    EXPECT_TRUE(isSignatureOf(*signature->value, digest, key.publicKey));
}

TEST_F(TpmKeyStore, KeyCanNeitherLeaveTheChipNorDoMoreThanSign) {
    const auto attributes =
        tpm::decodeKey(make().wrappedPrivateKey).publicPart.publicArea.objectAttributes;
    EXPECT_EQ(attributes, TPMA_OBJECT_SIGN_ENCRYPT | TPMA_OBJECT_FIXEDTPM |
                              TPMA_OBJECT_FIXEDPARENT | TPMA_OBJECT_SENSITIVEDATAORIGIN |
                              TPMA_OBJECT_USERWITHAUTH | TPMA_OBJECT_NODA);
}

TEST_F(TpmKeyStore, WithoutAKeyringNoKeyIsMade) {
    keyring->failure = "No keyring is running.";
    const auto made = scope.run(store.create());
    ASSERT_TRUE(made->error);
    EXPECT_EQ(made->error->localizedDescription(), "No keyring is running.");
}

TEST_F(TpmKeyStore, KeyIsOfNoUseWithoutTheKeyringItWasMadeWith) {
    const CreatedKey key = make();
    for (const auto& kept : {std::optional<Bytes>(), std::optional(randomBytes(32))}) {
        keyring->kept = kept;
        const auto signature = sign(key);
        ASSERT_TRUE(signature->error);
        EXPECT_EQ(signature->error->kind(), FailureKind::storage);
        EXPECT_EQ(signature->error->localizedDescription(),
                  "This passkey can no longer be used, because your keyring no longer holds the "
                  "key that protects it. Sign in another way, then register a new passkey from "
                  "the Account menu.");
    }
}

// It is what the other store encrypts with, and no business of a chip.
TEST_F(TpmKeyStore, WrappingKeyItselfAuthorizesNothing) {
    const tpm::TpmKey key = tpm::decodeKey(make().wrappedPrivateKey);
    const tpm::TpmConnection connection(chip.transport());
    EXPECT_THROW(tpm::signWith(connection, key, SecretBytes(Bytes(*keyring->kept)), digest),
                 Failure);
}

TEST_F(TpmKeyStore, WhoListensOnTheWayToTheChipLearnsNeitherAuthorizationNorDigest) {
    const test::TemporaryFolder folder;
    const auto heard = folder / "heard.pcap";
    ::setenv("TCTI_PCAP_FILE", heard.c_str(), 1);
    tpm::TpmKeyStore recorded(chip.recordedTransport(), keyring, scope.worker);
    const auto made = scope.run(recorded.create());
    ASSERT_TRUE(made->value) << made->error->what();
    digest = randomBytes(32);
    const auto signature = scope.run(recorded.sign(made->value->wrappedPrivateKey, digest));
    ASSERT_TRUE(signature->value) << signature->error->what();

    std::ifstream file(heard, std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const auto isHeard = [&](ByteView part) { return !std::ranges::search(bytes, part).empty(); };
    const auto& point = made->value->publicKey;
    EXPECT_TRUE(isHeard(point.x)) << "the way was not listened to";
    const SecretBytes kept{Bytes(*keyring->kept)};
    EXPECT_FALSE(isHeard(derivedKey(kept, "authorization of keys in the TPM").view()));
    EXPECT_FALSE(isHeard(kept.view()));
    EXPECT_FALSE(isHeard(digest));
}

TEST_F(TpmKeyStore, CancelledRequestDoesNotReachTheChip) {
    fakes::HeldWorker held;
    tpm::TpmKeyStore waiting(chip.transport(), keyring, held);
    scope.run(waiting.create());
    dropSpawnedTasks();
    chip.cutPower();
    held.jobs.front()();
    EXPECT_FALSE(keyring->kept);
}

} // namespace
} // namespace kelo::tests
