#include "component/tpm/SimulatedChip.h"
#include "e2e/ProgramFixture.h"
#include "testing/rig/ChildProcess.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace kelo::e2e {

namespace {

using rig::choice;
using testing::HasSubstr;
using testing::Not;

/// Grace, who has registered a passkey before there was a chip; from then on there is one.
class SecurityChip : public ProgramFixture {
protected:
    void SetUp() override {
        std::filesystem::create_directories(ceremonies.parent_path());
        std::filesystem::remove(ceremonies);
        serviceOptions = {"--record", ceremonies};
        ProgramFixture::SetUp();
        becomeOwnerOfPasskey(grace);
        endKelo();
        environment["LD_PRELOAD"] = KELO_GIVEN_CHIP_LIBRARY;
        environment["KELO_GIVEN_CHIP"] = chip.transport();
        startKelo();
        user.awaitLoginPage();
    }

    /// What kelo-passkeys prints for programs.
    nlohmann::json told(const std::string& command) const {
        auto variables = environment;
        variables["XDG_DATA_HOME"] = userFolder / "data";
        rig::ChildProcess program({build() / "kelo-passkeys", command, "--json"}, variables,
                                  folder.path() / (command + ".log"));
        program.awaitExit(std::chrono::seconds(30));
        return nlohmann::json::parse(program.printed());
    }
    /// Where the passkey of the account is kept: "chip" or "software".
    std::string keeperOf(const Person& person) const {
        const auto list = told("list");
        for (const auto& passkey : list["passkeys"])
            if (passkey["account"] == person.email)
                return passkey["keptIn"];
        return "nowhere";
    }
    void tryToSignInAs(const Person& person) const {
        user.pressSignInWithPasskey();
        user.awaitSheet();
        user.click(choice(person.email));
        user.confirmSheet(desktop().loginPassword);
    }

    tests::SimulatedChip chip;
    /// What the service has accepted, for tests/verifiers.
    const std::filesystem::path ceremonies =
        build() / "e2e" /
        (std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) +
         ".ceremonies");
};

} // namespace

TEST_F(SecurityChip, PasskeyIsMadeInTheChipAndSignsIn) {
    becomeOwnerOfPasskey(ada);
    EXPECT_EQ(keeperOf(ada), "chip");
    EXPECT_EQ(keeperOf(grace), "software");
    EXPECT_THAT(told("doctor").dump(),
                HasSubstr("New passkeys are made in this computer's security chip (TPM)."));
    for (const Person& person : {ada, grace}) {
        tryToSignInAs(person);
        user.awaitSignedIn(person.firstName);
        user.signOut();
    }
}

TEST_F(SecurityChip, ClearedChipIsSaidAndTakesNoPasskeyInSoftwareWithIt) {
    becomeOwnerOfPasskey(ada);
    chip.clear();
    tryToSignInAs(ada);
    user.awaitError("This passkey can no longer be used, because this computer's security chip "
                    "(TPM) was cleared or replaced. Sign in another way, then register a new "
                    "passkey from the Account menu.");
    look("cleared");
    EXPECT_THAT(kelo->printed(), HasSubstr("the storage primary is another one"));
    EXPECT_THAT(kelo->printed(), Not(HasSubstr("tss2-")));
    tryToSignInAs(grace);
    user.awaitSignedIn("Grace");
    user.signOut();
    // What the sentence advises.
    becomeOwnerOfPasskey(ada);
    tryToSignInAs(ada);
    user.awaitSignedIn("Ada");
}

TEST_F(SecurityChip, PasskeyInAChipThatIsGoneIsSaid) {
    becomeOwnerOfPasskey(ada);
    chip.cutPower();
    tryToSignInAs(ada);
    user.awaitError("This computer's security chip (TPM) does not answer. Restart the computer; if "
                    "that does not help, see whether the chip is switched on in the settings of "
                    "the firmware.");
    EXPECT_THAT(kelo->printed(), Not(HasSubstr("tss2-")));
    chip.powerOn();
    tryToSignInAs(ada);
    user.awaitSignedIn("Ada");
}

} // namespace kelo::e2e
