#include "unit/authenticator/Records.h"

#include "fakes/authenticator/ScopedAuthenticator.h"
#include "linux/inventory/OwnInventory.h"
#include "platform/Window.h"

#include <gmock/gmock.h>

namespace kelo::tests {
namespace {

using authenticator::VerificationOutcome;
using inventory::DeletionResult;
using inventory::ListedPasskey;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Verifies, and does something before it answers.
class BusyVerifier final : public authenticator::UserVerifier {
public:
    Task<VerificationOutcome> verify(authenticator::VerificationConversation&) override {
        meanwhile();
        co_return VerificationOutcome::verified;
    }
    std::function<void()> meanwhile;
};

class OwnInventory : public testing::Test {
protected:
    void save(std::string_view identifier) { scope.credentials.save(record(identifier, "user")); }
    std::vector<ListedPasskey> listed() {
        return scope.run(inventory.passkeys())->value.value_or(std::vector<ListedPasskey>());
    }
    std::shared_ptr<fakes::Ended<DeletionResult>> remove(const ListedPasskey& passkey) {
        return scope.run(inventory.remove(passkey, anchor));
    }

    fakes::ScopedAuthenticator scope;
    fakes::HeldWorker slowWorker;
    inventory::Surroundings found{.chipTrouble = std::nullopt,
                                  .keyring = authorization::KeyringState::unlocked,
                                  .verification = authorization::VerificationMeans::complete,
                                  .fileTrouble = std::nullopt,
                                  .passkeys = 0,
                                  .passkeysInChip = 0};
    std::stop_token lookingAround;
    inventory::InventoryParts parts{scope.credentials,
                                    scope.verifier,
                                    scope.sheets,
                                    scope.worker,
                                    slowWorker,
                                    [this](std::stop_token stop) {
                                        lookingAround = std::move(stop);
                                        return found;
                                    }};
    inventory::OwnInventory inventory{parts};
    std::shared_ptr<platform::Window> anchor = std::make_shared<platform::Window>();
};

TEST_F(OwnInventory, ListsWhatItsOwnerMaySeeTheLastMadeFirst) {
    save("one");
    auto second = record("two", "user");
    second.keeper = authenticator::KeyKeeper::chip;
    scope.credentials.save(second);
    scope.credentials.noteAccepted("localhost", second.credentialId);
    const auto later = second.created + std::chrono::hours(1);
    scope.credentials.noteUsed("localhost", second.credentialId, later);
    save("three");
    const auto all = listed();
    ASSERT_EQ(all.size(), 2U) << "an accepted passkey takes the place of older ones";
    EXPECT_EQ(all[0], (ListedPasskey{bytesOf("three"), "account of user", "localhost",
                                     second.created, std::nullopt, false, false}));
    EXPECT_EQ(all[1], (ListedPasskey{bytesOf("two"), "account of user", "localhost", second.created,
                                     later, true, true}));
}

TEST_F(OwnInventory, FileThatCannotBeReadIsAFailure) {
    std::filesystem::create_directories(scope.folder.path() / "kelo" / "passkeys.sqlite");
    const auto ended = scope.run(inventory.passkeys());
    ASSERT_TRUE(ended->error);
    EXPECT_EQ(ended->error->kind(), FailureKind::storage);
}

TEST_F(OwnInventory, FindingsAreWhatCouldBeBetterAndNotTheFile) {
    found.chipTrouble = "There is none.";
    found.keyring = authorization::KeyringState::absent;
    found.fileTrouble = "The file is damaged.";
    const auto ended = scope.run(inventory.findings());
    ASSERT_EQ(slowWorker.jobs.size(), 1U);
    slowWorker.jobs.front()();
    scope.loop.runUntilIdle();
    ASSERT_TRUE(ended->value);
    std::vector<std::string> names;
    for (const auto& finding : *ended->value)
        names.push_back(finding.name);
    EXPECT_THAT(names, ElementsAre("chip", "keyring"));
}

TEST_F(OwnInventory, ListDoesNotWaitForTheFindings) {
    save("one");
    const auto looking = scope.run(inventory.findings());
    EXPECT_EQ(listed().size(), 1U);
    EXPECT_TRUE(looking->pending());
}

TEST_F(OwnInventory, LookingAroundEndsWithItsTask) {
    scope.run(inventory.findings());
    slowWorker.jobs.front()();
    EXPECT_FALSE(lookingAround.stop_requested());
    dropSpawnedTasks();
    EXPECT_TRUE(lookingAround.stop_requested());
}

TEST_F(OwnInventory, DeletesOnceItsOwnerAgreesAndIsVerified) {
    save("one");
    save("two");
    const auto ended = remove(listed()[0]);
    ASSERT_TRUE(ended->value);
    EXPECT_TRUE(ended->value->isDeleted);
    EXPECT_EQ(ended->value->sentence, "The passkey was deleted.");
    EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "verify", "closed"));
    const auto& request = scope.person.requests.front();
    EXPECT_EQ(request.ceremony, authenticator::Ceremony::deletion);
    EXPECT_THAT(request.warning, HasSubstr("account of user for localhost"));
    EXPECT_THAT(request.warning, HasSubstr("remove the passkey in your account there as well"));
    EXPECT_EQ(scope.person.anchor, anchor);
    ASSERT_EQ(listed().size(), 1U);
    EXPECT_EQ(listed()[0].credentialId, bytesOf("one"));
}

TEST_F(OwnInventory, WhoDoesNotAgreeDeletesNothingAndIsNotVerified) {
    save("one");
    scope.person.choice = std::nullopt;
    const auto ended = remove(listed()[0]);
    ASSERT_TRUE(ended->value);
    EXPECT_FALSE(ended->value->isDeleted);
    EXPECT_EQ(ended->value->sentence, "Nothing was deleted.");
    EXPECT_THAT(scope.person.events, ElementsAre("sheet", "confirm", "closed"));
    EXPECT_EQ(listed().size(), 1U);
}

TEST_F(OwnInventory, WhoIsNotVerifiedDeletesNothingAndIsToldWhy) {
    save("one");
    for (const auto& [outcome, sentence] :
         {std::pair{VerificationOutcome::failed, "Kelo could not verify that it is you"},
          {VerificationOutcome::undecided, "Kelo could not verify that it is you"},
          {VerificationOutcome::cancelled, "Nothing was deleted."},
          {VerificationOutcome::unavailable, "This computer has no way to check that it is you"}}) {
        scope.verifier.outcome = outcome;
        const auto ended = remove(listed()[0]);
        ASSERT_TRUE(ended->value);
        EXPECT_FALSE(ended->value->isDeleted);
        EXPECT_THAT(ended->value->sentence, HasSubstr(sentence));
        EXPECT_EQ(listed().size(), 1U);
    }
}

TEST_F(OwnInventory, PasskeyThatIsGoneAlreadyIsNotAskedAbout) {
    save("one");
    save("two");
    const auto gone = listed()[0];
    scope.credentials.remove(gone.credentialId);
    const auto ended = remove(gone);
    ASSERT_TRUE(ended->value);
    EXPECT_FALSE(ended->value->isDeleted);
    EXPECT_EQ(ended->value->sentence, "This passkey is no longer on this computer.");
    EXPECT_THAT(scope.person.events, IsEmpty());
    EXPECT_EQ(listed().size(), 1U);
}

TEST_F(OwnInventory, PasskeyThatGoesDuringTheCheckIsDeletedAllTheSame) {
    save("one");
    const auto passkey = listed()[0];
    BusyVerifier busy;
    busy.meanwhile = [&] { scope.credentials.remove(passkey.credentialId); };
    inventory::OwnInventory other(
        {scope.credentials, busy, scope.sheets, scope.worker, slowWorker, parts.lookAround});
    const auto ended = scope.run(other.remove(passkey, nullptr));
    ASSERT_TRUE(ended->value);
    EXPECT_TRUE(ended->value->isDeleted);
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(OwnInventory, FileThatFailsInTheMiddleIsAFailure) {
    save("one");
    const auto passkey = listed()[0];
    BusyVerifier busy;
    busy.meanwhile = [&] {
        std::filesystem::remove_all(scope.folder.path() / "kelo");
        std::filesystem::create_directories(scope.folder.path() / "kelo" / "passkeys.sqlite");
    };
    inventory::OwnInventory other(
        {scope.credentials, busy, scope.sheets, scope.worker, slowWorker, parts.lookAround});
    const auto ended = scope.run(other.remove(passkey, nullptr));
    ASSERT_TRUE(ended->error);
    EXPECT_EQ(ended->error->kind(), FailureKind::storage);
    EXPECT_EQ(scope.person.events.back(), "closed");
}

TEST_F(OwnInventory, DroppedQuestionClosesTheSheetAndDeletesNothing) {
    save("one");
    scope.person.leavesOpen = true;
    const auto ended = remove(listed()[0]);
    EXPECT_TRUE(ended->pending());
    dropSpawnedTasks();
    EXPECT_EQ(scope.person.events.back(), "closed");
    EXPECT_EQ(listed().size(), 1U);
}

} // namespace
} // namespace kelo::tests
