#include "Hex.h"

#include "authenticator/keys/Cryptography.h"
#include "authenticator/keys/SoftwareKeyStore.h"
#include "fakes/authenticator/FakeWrappingKeySource.h"
#include "fakes/authenticator/ScopedAuthenticator.h"

#include <gtest/gtest.h>

namespace kelo {

using namespace authenticator;

namespace {

class SoftwareKeyStoreTest : public testing::Test {
protected:
    fakes::ScopedAuthenticator scope;
    std::shared_ptr<fakes::FakeWrappingKeySource> source =
        std::make_shared<fakes::FakeWrappingKeySource>();
    authenticator::SoftwareKeyStore store{source, scope.worker};
    Bytes digest = Bytes(32, 0x5A);
};

} // namespace

TEST_F(SoftwareKeyStoreTest, SignsWithTheKeyItMade) {
    const auto created = scope.run(store.create());
    ASSERT_TRUE(created->value);
    const auto signature = scope.run(store.sign(created->value->wrappedPrivateKey, digest));
    ASSERT_TRUE(signature->value);
    EXPECT_EQ(signature->value->at(0), 0x30);
}

TEST_F(SoftwareKeyStoreTest, MakesNoKeyWithoutAWrappingKey) {
    source->failure = "No keyring is running.";
    const auto created = scope.run(store.create());
    ASSERT_TRUE(created->error);
    EXPECT_EQ(created->error->localizedDescription(), "No keyring is running.");
    EXPECT_FALSE(source->kept);
}

TEST_F(SoftwareKeyStoreTest, SaysThatALostWrappingKeyIsLost) {
    const auto created = scope.run(store.create());
    for (const auto& kept :
         {std::optional<Bytes>(), std::optional(authenticator::randomBytes(32))}) {
        source->kept = kept;
        const auto signature = scope.run(store.sign(created->value->wrappedPrivateKey, digest));
        ASSERT_TRUE(signature->error);
        EXPECT_EQ(signature->error->kind(), FailureKind::storage);
        EXPECT_EQ(
            signature->error->localizedDescription(),
            "This passkey can no longer be used, because your keyring no longer holds the key that "
            "protects it. Sign in another way, then register a new passkey from the Account menu.");
        EXPECT_EQ(source->kept, kept) << "signing must not put a new wrapping key in place";
    }
}

TEST_F(SoftwareKeyStoreTest, SaysThatADamagedKeyIsDamaged) {
    const auto created = scope.run(store.create());
    Bytes damaged = created->value->wrappedPrivateKey;
    damaged.back() ^= 1;
    const auto signature = scope.run(store.sign(damaged, digest));
    ASSERT_TRUE(signature->error);
    EXPECT_NE(signature->error->localizedDescription().find("damaged on disk"), std::string::npos);
}

TEST_F(SoftwareKeyStoreTest, StopsTheSourceWhenNobodyWaitsAnyMore) {
    fakes::HeldWorker worker;
    authenticator::SoftwareKeyStore held(source, worker);
    scope.run(held.create());
    ASSERT_EQ(worker.jobs.size(), 1U);
    dropSpawnedTasks();
    worker.jobs.front()();
    EXPECT_FALSE(source->kept) << "a dropped request must not reach the keyring";
    EXPECT_FALSE(source->lastStop.stop_possible());
}

TEST_F(SoftwareKeyStoreTest, ADroppedSignatureDoesNotReachTheKeyring) {
    fakes::HeldWorker worker;
    authenticator::SoftwareKeyStore held(source, worker);
    scope.run(held.sign(Bytes(133), digest));
    ASSERT_EQ(worker.jobs.size(), 1U);
    dropSpawnedTasks();
    worker.jobs.front()();
    EXPECT_FALSE(source->lastStop.stop_possible());
}

} // namespace kelo
