#include "e2e/ProgramFixture.h"
#include "testing/rig/ProcessMemory.h"

#include <gmock/gmock.h>

namespace kelo::e2e {

namespace {

using rig::DisguisedText;
using testing::IsEmpty;
using testing::Not;

/// What stays in the memory of the running program.
class Memory : public ProgramFixture {
protected:
    std::vector<std::string> placesOf(const DisguisedText& text) const {
        return rig::findInMemory(kelo->identifier(), text);
    }
};

} // namespace

TEST_F(Memory, KeepsNoPasswordAfterARegistration) {
    const auto accountPassword = DisguisedText::random(16);
    const std::string refusal = "Registration failed: Invalid code.";
    user.signInWithPassword(ada.email, ada.password);
    user.awaitSignedIn("Ada");
    user.chooseRegister();
    user.answerPrompt(accountPassword.plain());
    user.confirmSheet(desktop().loginPassword);
    user.awaitAlert(refusal);
    EXPECT_THAT(placesOf(accountPassword), IsEmpty());
    EXPECT_THAT(placesOf(DisguisedText::of(desktop().loginPassword)), IsEmpty());
    // What is there is found.
    EXPECT_THAT(placesOf(DisguisedText::of(refusal)), Not(IsEmpty()));
}

} // namespace kelo::e2e
