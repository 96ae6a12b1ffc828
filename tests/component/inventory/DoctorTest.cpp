#include "linux/inventory/Doctor.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace kelo::inventory {
namespace {

using authorization::KeyringState;
using authorization::VerificationMeans;
using State = Finding::State;
using testing::HasSubstr;

class Doctor : public testing::Test {
protected:
    Finding finding(const std::string& name) const {
        const auto all = diagnose(found);
        return *std::ranges::find(all, name, &Finding::name);
    }

    Surroundings found{.chipTrouble = std::nullopt,
                       .keyring = KeyringState::unlocked,
                       .verification = VerificationMeans::complete,
                       .fileTrouble = std::nullopt,
                       .passkeys = 2,
                       .passkeysInChip = 0};
};

TEST_F(Doctor, SaysOfEverythingThatItIsWell) {
    const auto all = diagnose(found);
    ASSERT_EQ(all.size(), 4U);
    for (const Finding& each : all) {
        EXPECT_EQ(each.state, State::good) << each.name;
        EXPECT_FALSE(each.sentence.empty()) << each.name;
    }
    EXPECT_EQ(finding("passkeys").sentence, "There are 2 passkeys on this computer.");
}

TEST_F(Doctor, MissingChipIsNoTroubleUnlessAPasskeyIsInIt) {
    found.chipTrouble = "The chip does not answer.";
    EXPECT_EQ(finding("chip").state, State::notice);
    EXPECT_EQ(finding("chip").sentence,
              "New passkeys are kept in software. The chip does not answer.");
    found.passkeysInChip = 1;
    EXPECT_EQ(finding("chip").state, State::trouble);
    EXPECT_EQ(finding("chip").sentence, "The chip does not answer.");
}

TEST_F(Doctor, LockedKeyringIsNoTrouble) {
    found.keyring = KeyringState::locked;
    EXPECT_EQ(finding("keyring").state, State::notice);
    found.keyring = KeyringState::empty;
    EXPECT_EQ(finding("keyring").state, State::good);
    found.keyring = KeyringState::own;
    EXPECT_EQ(finding("keyring").state, State::good);
    EXPECT_THAT(finding("keyring").sentence, HasSubstr("asks for its password at each use"));
    found.keyring = KeyringState::absent;
    EXPECT_EQ(finding("keyring").state, State::trouble);
}

TEST_F(Doctor, EachPartOfTheCheckIsNamed) {
    found.verification = VerificationMeans::noHelper;
    EXPECT_EQ(finding("verification").state, State::trouble);
    EXPECT_THAT(finding("verification").sentence, HasSubstr("kelo-verify-user"));
    found.verification = VerificationMeans::noService;
    EXPECT_EQ(finding("verification").state, State::trouble);
    EXPECT_THAT(finding("verification").sentence, HasSubstr("/etc/pam.d/kelo"));
}

TEST_F(Doctor, FileThatCannotBeReadIsTrouble) {
    found.fileTrouble = "The file is damaged.";
    EXPECT_EQ(finding("passkeys").state, State::trouble);
    EXPECT_EQ(finding("passkeys").sentence, "The file is damaged.");
}

} // namespace
} // namespace kelo::inventory
