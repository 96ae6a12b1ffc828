#include "Hex.h"

#include "authenticator/keys/Cryptography.h"
#include "authenticator/keys/KeyWrapping.h"
#include "authenticator/keys/SoftwareKeyStore.h"
#include "base/Failure.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>

namespace kelo {

using namespace authenticator;

namespace {

authenticator::SecretBytes wrappingKey(std::uint8_t fill) {
    authenticator::SecretBytes key(authenticator::wrappingKeySize);
    std::fill_n(key.data(), key.size(), fill);
    return key;
}

bool opens(const authenticator::SecretBytes& wrapping, const Bytes& wrapped) {
    return std::holds_alternative<authenticator::P256Key>(
        authenticator::unwrapPrivateKey(wrapping, wrapped));
}

authenticator::UnwrapFailure failureOf(const authenticator::SecretBytes& wrapping,
                                       const Bytes& wrapped) {
    return std::get<authenticator::UnwrapFailure>(
        authenticator::unwrapPrivateKey(wrapping, wrapped));
}

/// Leaves the cryptographic library without algorithms, as a broken installation does.
class BrokenLibrary {
public:
    BrokenLibrary() { EVP_set_default_properties(nullptr, "provider=none"); }
    ~BrokenLibrary() { EVP_set_default_properties(nullptr, ""); }
    BrokenLibrary(const BrokenLibrary&) = delete;
    BrokenLibrary& operator=(const BrokenLibrary&) = delete;
};

} // namespace

TEST(Cryptography, AFailureOfTheLibraryIsNotAFailureOfTheStorage) {
    const BrokenLibrary broken;
    try {
        authenticator::sha256("text");
        FAIL() << "the library works";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.kind(), FailureKind::cryptography);
        EXPECT_EQ(failure.localizedDescription(),
                  "The cryptographic library of this computer failed. Restart Kelo and try again.");
        EXPECT_EQ(failure.cause(), "OpenSSL failed at: SHA-256");
    }
}

TEST(P256Key, ComesBackFromItsScalar) {
    const authenticator::P256Key key = authenticator::P256Key::generate();
    const auto again = authenticator::P256Key::fromScalar(key.scalar());
    ASSERT_TRUE(again);
    EXPECT_EQ(again->publicKey(), key.publicKey());
}

TEST(P256Key, IsNotMadeFromAScalarOutsideTheCurve) {
    EXPECT_FALSE(authenticator::P256Key::fromScalar(
        authenticator::SecretBytes(fromHex(std::string(64, '0')))));
    EXPECT_FALSE(authenticator::P256Key::fromScalar(
        authenticator::SecretBytes(fromHex(std::string(64, 'f')))));
    const auto order = "ffffffff00000000ffffffffffffffffbce6faada7179e84f3b9cac2fc632551";
    EXPECT_FALSE(authenticator::P256Key::fromScalar(authenticator::SecretBytes(fromHex(order))));
    EXPECT_FALSE(authenticator::P256Key::fromScalar(authenticator::SecretBytes(fromHex("01"))));
}

TEST(P256Key, PadsItsScalarTo32Bytes) {
    const std::string small = std::string(62, '0') + "07";
    const auto key = authenticator::P256Key::fromScalar(authenticator::SecretBytes(fromHex(small)));
    ASSERT_TRUE(key);
    EXPECT_EQ(toHex(key->scalar().view()), small);
}

TEST(P256Key, SignatureEndsWithItsOwnLength) {
    const authenticator::P256Key key = authenticator::P256Key::generate();
    // Signatures are of 70 to 72 bytes, or less; among so many there is a short one.
    for (int i = 0; i < 32; ++i) {
        const Bytes signature = key.sign(Bytes(32, static_cast<std::uint8_t>(i)));
        EXPECT_EQ(signature.size(), signature.at(1) + 2U);
    }
}

TEST(KeyWrapping, WrappingKeyOfAnotherLengthStopsTheProcess) {
    const authenticator::P256Key key = authenticator::P256Key::generate();
    const Bytes wrapped = authenticator::wrapPrivateKey(wrappingKey(7), key);
    for (const std::size_t size :
         {authenticator::wrappingKeySize - 1, authenticator::wrappingKeySize + 1}) {
        EXPECT_DEATH(authenticator::wrapPrivateKey(authenticator::SecretBytes(size), key),
                     "a wrapping key has 32 bytes");
        EXPECT_DEATH(authenticator::unwrapPrivateKey(authenticator::SecretBytes(size), wrapped),
                     "a wrapping key has 32 bytes");
    }
}

TEST(KeyWrapping, OpensUnderTheSameWrappingKey) {
    const authenticator::P256Key key = authenticator::P256Key::generate();
    const Bytes wrapped = authenticator::wrapPrivateKey(wrappingKey(7), key);
    const auto opened = authenticator::unwrapPrivateKey(wrappingKey(7), wrapped);
    ASSERT_TRUE(std::holds_alternative<authenticator::P256Key>(opened));
    EXPECT_EQ(std::get<authenticator::P256Key>(opened).publicKey(), key.publicKey());
}

TEST(KeyWrapping, TellsAnotherWrappingKeyFromDamage) {
    const Bytes wrapped =
        authenticator::wrapPrivateKey(wrappingKey(7), authenticator::P256Key::generate());
    EXPECT_EQ(failureOf(wrappingKey(8), wrapped), authenticator::UnwrapFailure::otherWrappingKey);
}

TEST(KeyWrapping, NoticesEveryChangedByte) {
    const Bytes wrapped =
        authenticator::wrapPrivateKey(wrappingKey(7), authenticator::P256Key::generate());
    for (std::size_t i = 0; i < wrapped.size(); ++i) {
        Bytes changed = wrapped;
        changed[i] ^= 0x40;
        EXPECT_FALSE(opens(wrappingKey(7), changed)) << "byte " << i;
    }
}

TEST(KeyWrapping, NoticesAnyOtherLength) {
    Bytes wrapped =
        authenticator::wrapPrivateKey(wrappingKey(7), authenticator::P256Key::generate());
    EXPECT_EQ(failureOf(wrappingKey(7), {}), authenticator::UnwrapFailure::damaged);
    wrapped.push_back(0);
    EXPECT_EQ(failureOf(wrappingKey(7), wrapped), authenticator::UnwrapFailure::damaged);
    wrapped.pop_back();
    wrapped.pop_back();
    EXPECT_EQ(failureOf(wrappingKey(7), wrapped), authenticator::UnwrapFailure::damaged);
}

TEST(KeyWrapping, DoesNotPassOneKeyOffAsAnother) {
    const Bytes one =
        authenticator::wrapPrivateKey(wrappingKey(7), authenticator::P256Key::generate());
    Bytes mixed = authenticator::wrapPrivateKey(wrappingKey(7), authenticator::P256Key::generate());
    std::copy_n(one.begin() + 9, 64, mixed.begin() + 9); // the public key
    EXPECT_EQ(failureOf(wrappingKey(7), mixed), authenticator::UnwrapFailure::damaged);
}

TEST(KeyWrapping, HidesThePrivateKeyAndNeverRepeatsItself) {
    const authenticator::P256Key key = authenticator::P256Key::generate();
    const Bytes one = authenticator::wrapPrivateKey(wrappingKey(7), key);
    const Bytes two = authenticator::wrapPrivateKey(wrappingKey(7), key);
    EXPECT_NE(one, two);
    const authenticator::SecretBytes scalar = key.scalar();
    const auto view = scalar.view();
    EXPECT_EQ(std::search(one.begin(), one.end(), view.begin(), view.end()), one.end());
}

TEST(SecretBytes, LeavesNothingWhereItMovedFrom) {
    authenticator::SecretBytes first(fromHex("0102"));
    const authenticator::SecretBytes second = std::move(first);
    EXPECT_EQ(first.size(), 0U); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(toHex(second.view()), "0102");
}

} // namespace kelo
