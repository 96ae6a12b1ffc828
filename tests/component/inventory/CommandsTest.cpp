#include "component/inventory/TypedInput.h"
#include "unit/authenticator/Records.h"

#include "fakes/authenticator/ScopedAuthenticator.h"
#include "linux/inventory/Commands.h"

#include <gmock/gmock.h>

#include <sstream>

namespace kelo::tests {
namespace {

using authenticator::VerificationOutcome;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class Commands : public testing::Test {
protected:
    int run(std::vector<const char*> words, std::string_view typed = "") {
        const TypedInput input(typed);
        output.str("");
        errors.str("");
        const auto ended = scope.run(inventory::runCommand(parts, words));
        return ended->value.value_or(-1);
    }
    void save(std::string_view identifier) { scope.credentials.save(record(identifier, "user")); }
    std::size_t kept() const { return scope.credentials.all().size(); }

    fakes::ScopedAuthenticator scope;
    std::ostringstream output;
    std::ostringstream errors;
    inventory::Terminal terminal{output};
    inventory::Surroundings found;
    std::vector<std::string> moves;
    inventory::CommandParts parts{scope.credentials,
                                  scope.verifier,
                                  terminal,
                                  [this] { return found; },
                                  [this] { moves.emplace_back("own"); },
                                  [this] { moves.emplace_back("default"); },
                                  output,
                                  errors};
};

TEST_F(Commands, WithoutAnyItLists) {
    EXPECT_EQ(run({}), 0);
    EXPECT_EQ(output.str(), "There is no passkey on this computer.\n");
    save("one");
    for (const auto& words : {std::vector<const char*>{}, std::vector<const char*>{"list"}}) {
        EXPECT_EQ(run(words), 0);
        EXPECT_THAT(output.str(), HasSubstr("account of user"));
    }
}

TEST_F(Commands, WhatIsNotUnderstoodIsSaidAndChangesNothing) {
    save("one");
    using Words = std::vector<const char*>;
    for (const Words& words :
         {Words{"remove"}, Words{"list", "6f6e65"}, Words{"delete"}, Words{"delete", "a", "b"},
          Words{"delete", "6f6e65", "--json"}, Words{"doctor", "now"}, Words{"keyring"},
          Words{"keyring", "mine"}, Words{"keyring", "own", "now"},
          Words{"keyring", "own", "--json"}, Words{"--yes"}, Words{""}}) {
        EXPECT_EQ(run(words, "delete\n"), 2) << words.front();
        EXPECT_THAT(errors.str(), HasSubstr("kelo-passkeys --help"));
        EXPECT_THAT(output.str(), IsEmpty());
    }
    EXPECT_EQ(kept(), 1U);
    EXPECT_THAT(moves, IsEmpty());
}

TEST_F(Commands, HelpNamesAll) {
    EXPECT_EQ(run({"--help"}), 0);
    for (const char* word :
         {"list", "delete NAME", "doctor", "keyring own", "keyring default", "--json"})
        EXPECT_THAT(output.str(), HasSubstr(word));
}

TEST_F(Commands, DeletesAfterAQuestionAndACheck) {
    save("one");
    save("two");
    EXPECT_EQ(run({"delete", "6f6e65"}, "delete\n"), 0);
    EXPECT_EQ(scope.person.events, std::vector<std::string>{"verify"});
    ASSERT_EQ(kept(), 1U);
    EXPECT_EQ(scope.credentials.all().front().credentialId, bytesOf("two"));
    EXPECT_THAT(output.str(), HasSubstr("The passkey was deleted."));
    EXPECT_THAT(output.str(), HasSubstr("The service is not told"));
}

TEST_F(Commands, AnyOtherAnswerDeletesNothingAndChecksNobody) {
    save("one");
    for (const char* typed : {"", "\n", "y\n", "yes\n", "deletes\n", "Delete\n"}) {
        EXPECT_EQ(run({"delete", "6f6e65"}, typed), 1) << typed;
        EXPECT_THAT(errors.str(), HasSubstr("Nothing was deleted."));
    }
    EXPECT_EQ(kept(), 1U);
    EXPECT_THAT(scope.person.events, IsEmpty());
}

TEST_F(Commands, WhoIsNotVerifiedDeletesNothing) {
    save("one");
    for (const auto outcome : {VerificationOutcome::failed, VerificationOutcome::cancelled,
                               VerificationOutcome::undecided, VerificationOutcome::unavailable}) {
        scope.verifier.outcome = outcome;
        EXPECT_EQ(run({"delete", "6f6e65"}, "delete\n"), 1);
        EXPECT_THAT(errors.str(), Not(IsEmpty()));
        EXPECT_EQ(kept(), 1U);
    }
}

TEST_F(Commands, NameThatFitsNoneOrSeveralDeletesNothing) {
    save("same beginning 1");
    save("same beginning 2");
    EXPECT_EQ(run({"delete", "0000"}, "delete\n"), 1);
    EXPECT_THAT(errors.str(), HasSubstr("There is no passkey 0000."));
    EXPECT_EQ(run({"delete", "73616d65"}, "delete\n"), 1);
    EXPECT_THAT(errors.str(), HasSubstr("There are several passkeys 73616d65…"));
    EXPECT_EQ(run({"delete", ""}, "delete\n"), 1);
    EXPECT_EQ(kept(), 2U);
}

TEST_F(Commands, DoctorEndsWithOneWhereThereIsTrouble) {
    found.keyring = authorization::KeyringState::unlocked;
    found.verification = authorization::VerificationMeans::complete;
    EXPECT_EQ(run({"doctor"}), 0);
    EXPECT_THAT(output.str(), HasSubstr("✓ Keyring: Your keyring is unlocked."));
    found.chipTrouble = "There is none.";
    EXPECT_EQ(run({"doctor"}), 0);
    found.keyring = authorization::KeyringState::absent;
    EXPECT_EQ(run({"doctor"}), 1);
    EXPECT_THAT(output.str(), HasSubstr("✗ Keyring: No keyring is running"));
}

TEST_F(Commands, KeyMovesToTheKeyringThatIsNamed) {
    EXPECT_EQ(run({"keyring", "own"}), 0);
    EXPECT_THAT(output.str(), HasSubstr("asks for that password from now on"));
    EXPECT_EQ(run({"keyring", "default"}), 0);
    EXPECT_THAT(output.str(), HasSubstr("in the keyring of your login"));
    EXPECT_EQ(moves, (std::vector<std::string>{"own", "default"}));
}

TEST_F(Commands, KeyThatCannotBeMovedIsSaid) {
    parts.keepKeyInOwnKeyring = [] { throw Failure(FailureKind::storage, "It stays.", "cause"); };
    EXPECT_EQ(run({"keyring", "own"}), 1);
    EXPECT_EQ(errors.str(), "kelo-passkeys: It stays.\n");
    EXPECT_THAT(output.str(), IsEmpty());
}

TEST_F(Commands, FileThatCannotBeReadIsSaid) {
    std::filesystem::create_directories(scope.folder.path() / "kelo" / "passkeys.sqlite");
    EXPECT_EQ(run({"list"}), 1);
    EXPECT_THAT(errors.str(), HasSubstr("There is something else in the place of the file"));
}

} // namespace
} // namespace kelo::tests
