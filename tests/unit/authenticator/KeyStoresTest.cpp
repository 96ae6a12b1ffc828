#include "fakes/authenticator/ScopedAuthenticator.h"

#include <gtest/gtest.h>

namespace kelo {

using namespace authenticator;

class KeyStoresTest : public testing::Test {
protected:
    fakes::ScopedAuthenticator scope;
    KeyStores& stores = scope.stores;
    Bytes digest = Bytes(32, 0x5A);
};

TEST_F(KeyStoresTest, KeysAreMadeByTheChipIfItAnswers) {
    EXPECT_EQ(scope.run(stores.create())->value->keeper, KeyKeeper::software);
    scope.chip.isThere = true;
    EXPECT_EQ(scope.run(stores.create())->value->keeper, KeyKeeper::chip);
}

TEST_F(KeyStoresTest, ChipThatAnswersAndFailsIsReported) {
    scope.chip.isThere = true;
    scope.chip.keys.failure = "The chip is busy.";
    const auto made = scope.run(stores.create());
    ASSERT_TRUE(made->error);
    EXPECT_EQ(made->error->localizedDescription(), "The chip is busy.");
}

TEST_F(KeyStoresTest, EachKeyIsUsedByTheStoreThatMadeIt) {
    scope.chip.isThere = true;
    const auto inChip = scope.run(stores.create())->value;
    scope.chip.isThere = false;
    const auto inSoftware = scope.run(stores.create())->value;
    const auto sign = [&](const CreatedKey& key) {
        return scope.run(stores.sign(key.keeper, key.wrappedPrivateKey, digest));
    };
    scope.keys.failure = "Your keyring is locked.";
    EXPECT_TRUE(sign(*inChip)->value);
    EXPECT_TRUE(sign(*inSoftware)->error);
    scope.keys.failure.reset();
    scope.chip.keys.failure = "The chip does not answer.";
    EXPECT_EQ(sign(*inChip)->error->localizedDescription(), "The chip does not answer.");
    EXPECT_TRUE(sign(*inSoftware)->value);
}

} // namespace kelo
