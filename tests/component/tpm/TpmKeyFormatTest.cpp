#include "base/Failure.h"
#include "linux/tpm/TpmKey.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kelo::tpm {
namespace {

TpmKey someKey() {
    TpmKey key;
    key.parentName.size = 34;
    std::fill_n(key.parentName.name, 34, 0x11);
    key.publicPart.publicArea.type = TPM2_ALG_ECC;
    key.publicPart.publicArea.nameAlg = TPM2_ALG_SHA256;
    auto& detail = key.publicPart.publicArea.parameters.eccDetail;
    detail.symmetric.algorithm = TPM2_ALG_NULL;
    detail.scheme.scheme = TPM2_ALG_NULL;
    detail.curveID = TPM2_ECC_NIST_P256;
    detail.kdf.scheme = TPM2_ALG_NULL;
    auto& point = key.publicPart.publicArea.unique.ecc;
    point.x.size = 32;
    std::fill_n(point.x.buffer, 32, 0x22);
    point.y.size = 31; // some chips leave out a leading zero
    std::fill_n(point.y.buffer, 31, 0x33);
    key.privatePart.size = 100;
    std::fill_n(key.privatePart.buffer, 100, 0x44);
    return key;
}

TEST(TpmKeyFormat, IsReadAsItWasWritten) {
    const TpmKey read = decodeKey(encode(someKey()));
    EXPECT_EQ(encode(read), encode(someKey()));
    EXPECT_EQ(read.privatePart.size, 100);
    EXPECT_EQ(read.parentName.name[33], 0x11);
}

TEST(TpmKeyFormat, ShortCoordinateIsFilledUpInFront) {
    const webauthn::PublicKey key = someKey().publicKey();
    EXPECT_EQ(key.x[0], 0x22);
    EXPECT_EQ(key.y[0], 0);
    EXPECT_EQ(key.y[1], 0x33);
    EXPECT_EQ(key.y[31], 0x33);
}

void expectDamaged(ByteView stored) {
    try {
        decodeKey(stored);
        ADD_FAILURE() << stored.size() << " bytes were read";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.kind(), FailureKind::storage);
        EXPECT_EQ(failure.localizedDescription(),
                  "This passkey is damaged on disk and cannot be used. Sign in another way, then "
                  "register a new passkey from the Account menu.");
    }
}

TEST(TpmKeyFormat, AnythingThatIsMissingIsDamage) {
    const Bytes whole = encode(someKey());
    for (std::size_t size = 0; size < whole.size(); ++size)
        expectDamaged(ByteView(whole).first(size));
}

TEST(TpmKeyFormat, AnythingThatFollowsIsDamage) {
    Bytes longer = encode(someKey());
    longer.push_back(0);
    expectDamaged(longer);
}

TEST(TpmKeyFormat, AnotherVersionIsDamage) {
    Bytes other = encode(someKey());
    other[0] = 2;
    expectDamaged(other);
}

} // namespace
} // namespace kelo::tpm
