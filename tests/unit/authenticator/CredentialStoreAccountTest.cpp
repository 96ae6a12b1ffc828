#include "EarlierVersions.h"
#include "Records.h"

#include "authenticator/store/CredentialStore.h"
#include "base/Failure.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

// Several passkeys of one account: which are kept, and for how long.

namespace kelo {

namespace fs = std::filesystem;

namespace {

class CredentialStoreAccount : public testing::Test {
protected:
    void accept(std::string_view id) const { store.noteAccepted("localhost", bytesOf(id)); }
    void refuse(std::string_view id) const { store.noteRefused("localhost", bytesOf(id)); }
    void save(std::string_view id) const { store.save(record(id, "user")); }
    /// The identifiers of all passkeys, the last saved first, each behind a blank.
    std::string kept() const {
        std::string all;
        for (const authenticator::CredentialRecord& record : store.find("localhost"))
            all += " " + textOf(record.credentialId);
        return all;
    }
    std::int64_t refusalsOf(std::string_view id) const {
        for (const authenticator::CredentialRecord& record : store.find("localhost"))
            if (record.credentialId == bytesOf(id))
                return record.refusals;
        return -1;
    }

    test::TemporaryFolder folder;
    fs::path file = folder.path() / "kelo" / "passkeys.sqlite";
    authenticator::CredentialStore store{file};
};

} // namespace

TEST_F(CredentialStoreAccount, ANewPasskeyLeavesTheFormerOne) {
    save("old");
    save("new");
    EXPECT_EQ(kept(), " new old");
}

TEST_F(CredentialStoreAccount, TheFormerOneGoesWhenTheNewOneIsAccepted) {
    save("old");
    accept("old");
    save("new");
    accept("new");
    EXPECT_EQ(kept(), " new");
}

TEST_F(CredentialStoreAccount, AcceptingTheOlderOneLeavesTheNewerOne) {
    save("older");
    save("newer");
    accept("older");
    EXPECT_EQ(kept(), " newer older");
}

TEST_F(CredentialStoreAccount, OtherAccountsAndOtherRelyingPartiesLoseNothing) {
    authenticator::CredentialRecord elsewhere = record("elsewhere", "user");
    elsewhere.relyingPartyIdentifier = "example.org";
    store.save(elsewhere);
    store.save(record("other", "somebody"));
    save("new");
    accept("new");
    EXPECT_EQ(kept(), " new other");
    EXPECT_EQ(store.find("example.org"), std::vector{elsewhere});
}

TEST_F(CredentialStoreAccount, AReportIsForItsRelyingPartyOnly) {
    save("old");
    save("new");
    store.noteAccepted("example.org", bytesOf("new"));
    store.noteRefused("example.org", bytesOf("new"));
    EXPECT_EQ(kept(), " new old");
    EXPECT_EQ(refusalsOf("new"), 0);
}

TEST_F(CredentialStoreAccount, ARefusedPasskeyStaysAndIsCounted) {
    save("a");
    refuse("a");
    refuse("a");
    EXPECT_EQ(kept(), " a");
    EXPECT_EQ(refusalsOf("a"), 2);
    accept("a");
    EXPECT_EQ(refusalsOf("a"), 0);
}

TEST_F(CredentialStoreAccount, TheAcceptedOneStaysHoweverManyAreRefusedAfterIt) {
    save("good");
    accept("good");
    for (int n = 0; n < 20; ++n) {
        const std::string id = "refused " + std::to_string(n);
        save(id);
        refuse(id);
    }
    EXPECT_EQ(kept(), " refused 19 refused 18 refused 17 refused 16 good");
}

TEST_F(CredentialStoreAccount, OfTheOthersTheRefusedOnesGoFirst) {
    for (const char* id : {"lost 1", "refused 1", "lost 2", "refused 2"})
        save(id);
    refuse("refused 1");
    refuse("refused 2");
    save("new");
    EXPECT_EQ(kept(), " new refused 2 lost 2 lost 1");
    save("newer");
    EXPECT_EQ(kept(), " newer new lost 2 lost 1");
    save("newest");
    EXPECT_EQ(kept(), " newest newer new lost 2");
}

TEST_F(CredentialStoreAccount, TheBoundIsForEachAccountAlone) {
    authenticator::CredentialRecord elsewhere = record("elsewhere", "user");
    elsewhere.relyingPartyIdentifier = "example.org";
    store.save(elsewhere);
    store.save(record("other", "somebody"));
    for (int n = 0; n < 5; ++n)
        save(std::to_string(n));
    EXPECT_EQ(kept(), " 4 3 2 1 other");
    EXPECT_EQ(store.find("example.org"), std::vector{elsewhere});
}

TEST_F(CredentialStoreAccount, AcceptedStaysAcceptedAfterARefusal) {
    save("good");
    accept("good");
    refuse("good");
    for (int n = 0; n < 5; ++n)
        save(std::to_string(n));
    EXPECT_EQ(kept(), " 4 3 2 1 good");
}

TEST_F(CredentialStoreAccount, TheOrderIsThatOfSavingAlsoAfterTheLastOneHasGone) {
    save("a");
    save("b");
    accept("b");
    save("c");
    accept("b");
    EXPECT_EQ(kept(), " c b");
}

TEST_F(CredentialStoreAccount, ReportsOfUnknownPasskeysChangeNothing) {
    accept("unknown");
    EXPECT_TRUE(fs::is_empty(folder.path()));
    fs::create_directories(file.parent_path());
    std::ofstream(file).close();
    accept("unknown");
    refuse("unknown");
    EXPECT_EQ(fs::file_size(file), 0U);
    save("a");
    accept("unknown");
    refuse("unknown");
    EXPECT_EQ(kept(), " a");
    EXPECT_EQ(refusalsOf("a"), 0);
}

TEST_F(CredentialStoreAccount, AnAcceptedPasskeyIsNotWrittenAgain) {
    save("a");
    accept("a");
    const auto written = fs::last_write_time(file) - std::chrono::hours(1);
    fs::last_write_time(file, written);
    accept("a");
    EXPECT_EQ(fs::last_write_time(file), written);
}

TEST_F(CredentialStoreAccount, AFileOfTheFirstVersionIsReadAsItIs) {
    authenticator::CredentialRecord later = acceptedRecord("b", "two");
    later.created += std::chrono::seconds(1);
    writeFirstVersion(file, {later, record("a", "user")});
    const auto written = fs::last_write_time(file) - std::chrono::hours(1);
    fs::last_write_time(file, written);
    EXPECT_EQ(store.find("localhost"), (std::vector{later, acceptedRecord("a", "user")}));
    EXPECT_EQ(fs::last_write_time(file), written);
}

TEST_F(CredentialStoreAccount, APasskeyOfTheFirstVersionCountsAsAccepted) {
    writeFirstVersion(file, {record("old", "user"), record("other", "somebody")});
    for (int n = 0; n < 6; ++n)
        save(std::to_string(n));
    EXPECT_EQ(kept(), " 5 4 3 2 other old");
    EXPECT_EQ(store.find("localhost").back(), acceptedRecord("old", "user"));
    accept("5");
    EXPECT_EQ(kept(), " 5 other");
}

TEST_F(CredentialStoreAccount, AnUpgradeKeepsTheOrder) {
    authenticator::CredentialRecord later = record("b", "two");
    later.created += std::chrono::seconds(1);
    writeFirstVersion(file, {later, record("a", "user")});
    refuse("a");
    EXPECT_EQ(kept(), " b a");
    EXPECT_EQ(refusalsOf("a"), 1);
}

} // namespace kelo
