#include "component/tpm/ChipFixture.h"

#include "linux/tpm/TpmConnection.h"
#include "linux/tpm/TpmResult.h"

#include <chrono>
#include <random>
#include <thread>

namespace kelo::tests {
namespace {

using tpm::TpmConnection;
using tpm::TpmTrouble;

class ChipTrouble : public ChipFixture {
protected:
    template <typename Ended>
    static void expect(TpmTrouble trouble, const std::shared_ptr<Ended>& ended) {
        ASSERT_TRUE(ended->error);
        EXPECT_EQ(ended->error->kind(), FailureKind::storage);
        EXPECT_EQ(ended->error->localizedDescription(),
                  tpm::tpmFailure(trouble, "").localizedDescription())
            << ended->error->what();
    }
    bool answers() { return *scope.run(store.answers())->value; }

    /// The objects and sessions that are in the chip's memory.
    static std::size_t handles(const TpmConnection& connection, TPM2_HANDLE first) {
        TPMS_CAPABILITY_DATA* told = nullptr;
        tpm::require(Esys_GetCapability(connection.get(), ESYS_TR_NONE, ESYS_TR_NONE, ESYS_TR_NONE,
                                        TPM2_CAP_HANDLES, first, 32, nullptr, &told),
                     "asking for handles");
        const tpm::TpmMemory<TPMS_CAPABILITY_DATA> memory(told);
        return told->data.handles.count;
    }
    std::size_t leftBehind() const {
        const TpmConnection connection(chip.transport());
        return handles(connection, TPM2_TRANSIENT_FIRST) +
               handles(connection, TPM2_HMAC_SESSION_FIRST) +
               handles(connection, TPM2_LOADED_SESSION_FIRST);
    }
};

/// Fills the chip's memory for sessions and forgets about it.
void leaveSessions(const SimulatedChip& chip) {
    const TpmConnection connection(chip.transport());
    const TPMT_SYM_DEF noCipher{.algorithm = TPM2_ALG_NULL, .keyBits = {}, .mode = {}};
    for (ESYS_TR session = ESYS_TR_NONE;
         Esys_StartAuthSession(connection.get(), ESYS_TR_NONE, ESYS_TR_NONE, ESYS_TR_NONE,
                               ESYS_TR_NONE, ESYS_TR_NONE, nullptr, TPM2_SE_HMAC, &noCipher,
                               TPM2_ALG_SHA256, &session) == TSS2_RC_SUCCESS;) {
    }
}

/// Fills the chip's memory for objects and forgets about it.
void leaveObjects(const SimulatedChip& chip) {
    const TpmConnection connection(chip.transport());
    for (ESYS_TR object = ESYS_TR_NONE;
         Esys_HashSequenceStart(connection.get(), ESYS_TR_NONE, ESYS_TR_NONE, ESYS_TR_NONE, nullptr,
                                TPM2_ALG_SHA256, &object) == TSS2_RC_SUCCESS;) {
    }
}

TEST_F(ChipTrouble, ChipThatIsThereAnswers) {
    EXPECT_TRUE(answers());
    chip.cutPower();
    EXPECT_FALSE(answers());
}

TEST_F(ChipTrouble, NothingStaysInTheChipsMemory) {
    const auto key = make();
    EXPECT_EQ(leftBehind(), 0U);
    ASSERT_TRUE(sign(key)->value);
    EXPECT_EQ(leftBehind(), 0U);
    keyring->kept = Bytes(32, 0x01);
    ASSERT_TRUE(sign(key)->error);
    EXPECT_EQ(leftBehind(), 0U);
    auto damaged = key;
    damaged.wrappedPrivateKey.back() ^= 1;
    ASSERT_TRUE(sign(damaged)->error);
    EXPECT_EQ(leftBehind(), 0U);
}

TEST_F(ChipTrouble, MissingDeviceIsSaid) {
    tpm::TpmKeyStore none("device:/dev/no-such-chip", keyring, scope.worker);
    expect(TpmTrouble::missing, scope.run(none.create()));
    EXPECT_FALSE(keyring->failure);
}

TEST_F(ChipTrouble, ChipThatIsGoneIsSaidAndNothingElseSigns) {
    const auto key = make();
    chip.cutPower();
    expect(TpmTrouble::silent, sign(key));
}

TEST_F(ChipTrouble, ClearedChipIsSaid) {
    const auto key = make();
    chip.clear();
    expect(TpmTrouble::otherChip, sign(key));
}

TEST_F(ChipTrouble, AnotherChipIsSaid) {
    const auto key = make();
    const SimulatedChip other;
    tpm::TpmKeyStore elsewhere(other.transport(), keyring, scope.worker);
    expect(TpmTrouble::otherChip, scope.run(elsewhere.sign(key.wrappedPrivateKey, digest)));
}

TEST_F(ChipTrouble, WrongAttemptsOfOthersLockNobodyOut) {
    const auto key = make();
    const auto kept = keyring->kept;
    for (int attempt = 0; attempt < 40; ++attempt) {
        keyring->kept = Bytes(32, static_cast<std::uint8_t>(attempt));
        expect(TpmTrouble::notAuthorized, sign(key));
    }
    keyring->kept = kept;
    EXPECT_TRUE(sign(key)->value);
}

TEST_F(ChipTrouble, FullMemoryIsSaidAndPasses) {
    const auto key = make();
    for (const auto fill : {leaveSessions, leaveObjects}) {
        fill(chip);
        expect(TpmTrouble::busy, sign(key));
        expect(TpmTrouble::busy, scope.run(store.create()));
        chip.cutPower();
        chip.powerOn();
        EXPECT_TRUE(sign(key)->value);
    }
}

TEST_F(ChipTrouble, PowerCutAtAnyInstantEndsInAKeyOrInASentence) {
    const auto begin = std::chrono::steady_clock::now();
    make();
    const std::chrono::duration<double> whole = std::chrono::steady_clock::now() - begin;
    std::mt19937 random(20261122); // NOLINT: the same parts of it in each run
    std::uniform_real_distribution<double> part(0, 2);
    int made = 0;
    for (int round = 0; round < 100; ++round) {
        const auto instant = whole * part(random);
        std::jthread killer([&] {
            const auto end = std::chrono::steady_clock::now() + instant;
            while (std::chrono::steady_clock::now() < end) {
            }
            chip.cutPower();
        });
        const auto ended = scope.run(store.create());
        killer.join();
        chip.powerOn();
        if (ended->value) {
            ++made;
            EXPECT_TRUE(sign(*ended->value)->value) << round;
        } else {
            expect(TpmTrouble::silent, ended);
        }
    }
    EXPECT_GT(made, 0);
    EXPECT_LT(made, 100);
    EXPECT_TRUE(sign(make())->value) << "the chip works as before";
}

TEST(ChipResult, CodesOfAnyPlaceAreTold) {
    EXPECT_EQ(tpm::troubleOf(TPM2_RC_LOCKOUT), TpmTrouble::lockedOut);
    EXPECT_EQ(tpm::troubleOf(TPM2_RC_INTEGRITY | TPM2_RC_P | TPM2_RC_1), TpmTrouble::otherChip);
    EXPECT_EQ(tpm::troubleOf(TPM2_RC_AUTH_FAIL | TPM2_RC_S | TPM2_RC_1), TpmTrouble::notAuthorized);
    EXPECT_EQ(tpm::troubleOf(TPM2_RC_BAD_AUTH | TPM2_RC_S | TPM2_RC_1), TpmTrouble::notAuthorized);
    EXPECT_EQ(tpm::troubleOf(TPM2_RC_RETRY), TpmTrouble::busy);
    EXPECT_EQ(tpm::troubleOf(TSS2_RESMGR_TPM_RC_LAYER | TPM2_RC_SESSION_MEMORY), TpmTrouble::busy);
    EXPECT_EQ(tpm::troubleOf(TSS2_TCTI_RC_IO_ERROR), TpmTrouble::silent);
    EXPECT_EQ(tpm::troubleOf(TPM2_RC_FAILURE), TpmTrouble::broken);
}

} // namespace
} // namespace kelo::tests
