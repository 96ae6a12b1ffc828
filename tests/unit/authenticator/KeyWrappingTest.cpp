#include "Hex.h"

#include "authenticator/Cryptography.h"
#include "authenticator/KeyWrapping.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>

namespace kelo {

using namespace authenticator;

namespace {

SecretBytes wrappingKey(std::uint8_t fill) {
    SecretBytes key(wrappingKeySize);
    std::fill_n(key.data(), key.size(), fill);
    return key;
}

bool opens(const SecretBytes& wrapping, const platform::Bytes& wrapped) {
    return std::holds_alternative<P256Key>(unwrapPrivateKey(wrapping, wrapped));
}

UnwrapFailure failureOf(const SecretBytes& wrapping, const platform::Bytes& wrapped) {
    return std::get<UnwrapFailure>(unwrapPrivateKey(wrapping, wrapped));
}

} // namespace

TEST(P256Key, ComesBackFromItsScalar) {
    const P256Key key = P256Key::generate();
    const auto again = P256Key::fromScalar(key.scalar());
    ASSERT_TRUE(again);
    EXPECT_EQ(again->publicKey(), key.publicKey());
}

TEST(P256Key, IsNotMadeFromAScalarOutsideTheCurve) {
    EXPECT_FALSE(P256Key::fromScalar(SecretBytes(fromHex(std::string(64, '0')))));
    EXPECT_FALSE(P256Key::fromScalar(SecretBytes(fromHex(std::string(64, 'f')))));
    const auto order = "ffffffff00000000ffffffffffffffffbce6faada7179e84f3b9cac2fc632551";
    EXPECT_FALSE(P256Key::fromScalar(SecretBytes(fromHex(order))));
    EXPECT_FALSE(P256Key::fromScalar(SecretBytes(fromHex("01"))));
}

TEST(P256Key, PadsItsScalarTo32Bytes) {
    const std::string small = std::string(62, '0') + "07";
    const auto key = P256Key::fromScalar(SecretBytes(fromHex(small)));
    ASSERT_TRUE(key);
    EXPECT_EQ(toHex(key->scalar().view()), small);
}

TEST(P256Key, SignatureEndsWithItsOwnLength) {
    const P256Key key = P256Key::generate();
    // Signatures are of 70 to 72 bytes, or less; among so many there is a short one.
    for (int i = 0; i < 32; ++i) {
        const platform::Bytes signature =
            key.sign(platform::Bytes(32, static_cast<std::uint8_t>(i)));
        EXPECT_EQ(signature.size(), signature.at(1) + 2U);
    }
}

TEST(KeyWrapping, WrappingKeyOfAnotherLengthStopsTheProcess) {
    const P256Key key = P256Key::generate();
    const platform::Bytes wrapped = wrapPrivateKey(wrappingKey(7), key);
    for (const std::size_t size : {wrappingKeySize - 1, wrappingKeySize + 1}) {
        EXPECT_DEATH(wrapPrivateKey(SecretBytes(size), key), "a wrapping key has 32 bytes");
        EXPECT_DEATH(unwrapPrivateKey(SecretBytes(size), wrapped), "a wrapping key has 32 bytes");
    }
}

TEST(KeyWrapping, OpensUnderTheSameWrappingKey) {
    const P256Key key = P256Key::generate();
    const platform::Bytes wrapped = wrapPrivateKey(wrappingKey(7), key);
    const auto opened = unwrapPrivateKey(wrappingKey(7), wrapped);
    ASSERT_TRUE(std::holds_alternative<P256Key>(opened));
    EXPECT_EQ(std::get<P256Key>(opened).publicKey(), key.publicKey());
}

TEST(KeyWrapping, TellsAnotherWrappingKeyFromDamage) {
    const platform::Bytes wrapped = wrapPrivateKey(wrappingKey(7), P256Key::generate());
    EXPECT_EQ(failureOf(wrappingKey(8), wrapped), UnwrapFailure::otherWrappingKey);
}

TEST(KeyWrapping, NoticesEveryChangedByte) {
    const platform::Bytes wrapped = wrapPrivateKey(wrappingKey(7), P256Key::generate());
    for (std::size_t i = 0; i < wrapped.size(); ++i) {
        platform::Bytes changed = wrapped;
        changed[i] ^= 0x40;
        EXPECT_FALSE(opens(wrappingKey(7), changed)) << "byte " << i;
    }
}

TEST(KeyWrapping, NoticesAnyOtherLength) {
    platform::Bytes wrapped = wrapPrivateKey(wrappingKey(7), P256Key::generate());
    EXPECT_EQ(failureOf(wrappingKey(7), {}), UnwrapFailure::damaged);
    wrapped.push_back(0);
    EXPECT_EQ(failureOf(wrappingKey(7), wrapped), UnwrapFailure::damaged);
    wrapped.resize(wrapped.size() - 2);
    EXPECT_EQ(failureOf(wrappingKey(7), wrapped), UnwrapFailure::damaged);
}

TEST(KeyWrapping, DoesNotPassOneKeyOffAsAnother) {
    const platform::Bytes one = wrapPrivateKey(wrappingKey(7), P256Key::generate());
    platform::Bytes mixed = wrapPrivateKey(wrappingKey(7), P256Key::generate());
    std::copy_n(one.begin() + 9, 64, mixed.begin() + 9); // the public key
    EXPECT_EQ(failureOf(wrappingKey(7), mixed), UnwrapFailure::damaged);
}

TEST(KeyWrapping, HidesThePrivateKeyAndNeverRepeatsItself) {
    const P256Key key = P256Key::generate();
    const platform::Bytes one = wrapPrivateKey(wrappingKey(7), key);
    const platform::Bytes two = wrapPrivateKey(wrappingKey(7), key);
    EXPECT_NE(one, two);
    const SecretBytes scalar = key.scalar();
    EXPECT_TRUE(std::ranges::search(one, scalar.view()).empty());
}

TEST(SecretBytes, LeavesNothingWhereItMovedFrom) {
    SecretBytes first(fromHex("0102"));
    const SecretBytes second = std::move(first);
    EXPECT_EQ(first.size(), 0U); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(toHex(second.view()), "0102");
}

} // namespace kelo
