#include "EarlierVersions.h"
#include "Records.h"

#include "authenticator/store/CredentialStore.h"
#include "base/Failure.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>

namespace kelo {

using namespace authenticator;
namespace fs = std::filesystem;

class CredentialStoreUpgrade : public testing::Test {
protected:
    static std::string contentOf(const fs::path& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    CredentialRecord found(std::string_view identifier) const {
        for (const CredentialRecord& each : store.find("localhost"))
            if (each.credentialId == bytesOf(identifier))
                return each;
        throw std::runtime_error("no passkey " + std::string(identifier));
    }

    test::TemporaryFolder folder;
    fs::path file = folder.path() / "kelo" / "passkeys.sqlite";
    fs::path former = folder.path() / "kelo" / "passkeys.sqlite.former";
    CredentialStore store{file};
    std::chrono::sys_seconds noon{std::chrono::seconds(1'763'812'800)};
};

TEST_F(CredentialStoreUpgrade, KeeperIsKept) {
    CredentialRecord inChip = record("chip", "user");
    inChip.keeper = KeyKeeper::chip;
    store.save(inChip);
    store.save(record("software", "user"));
    EXPECT_EQ(found("chip").keeper, KeyKeeper::chip);
    EXPECT_EQ(found("software").keeper, KeyKeeper::software);
}

TEST_F(CredentialStoreUpgrade, LastUseIsThatOfThePasskey) {
    store.save(record("a", "user"));
    store.save(record("b", "user"));
    EXPECT_FALSE(found("a").lastUsed);
    store.noteUsed("localhost", bytesOf("a"), noon);
    store.noteUsed("example.org", bytesOf("b"), noon);
    store.noteUsed("localhost", bytesOf("unknown"), noon);
    EXPECT_EQ(found("a").lastUsed, noon);
    EXPECT_FALSE(found("b").lastUsed);
    EXPECT_FALSE(found("a").accepted);
    store.noteAccepted("localhost", bytesOf("a"));
    EXPECT_TRUE(found("a").accepted);
}

TEST_F(CredentialStoreUpgrade, SecondVersionIsReadAsItIs) {
    writeSecondVersion(file, {acceptedRecord("a", "one"), record("b", "two")});
    const std::string before = contentOf(file);
    EXPECT_EQ(store.find("localhost"),
              (std::vector{record("b", "two"), acceptedRecord("a", "one")}));
    EXPECT_EQ(contentOf(file), before);
    EXPECT_FALSE(fs::exists(former));
}

TEST_F(CredentialStoreUpgrade, SecondVersionIsTakenOverByTheFirstWrite) {
    writeSecondVersion(file, {acceptedRecord("a", "one"), record("b", "two")});
    store.noteUsed("localhost", bytesOf("a"), noon);
    EXPECT_EQ(found("a").lastUsed, noon);
    EXPECT_TRUE(found("a").accepted);
    EXPECT_FALSE(found("b").accepted);
}

TEST_F(CredentialStoreUpgrade, FormerFileIsKeptUntilTheServiceAcceptsAPasskey) {
    for (const auto write : {&writeFirstVersion, &writeSecondVersion}) {
        fs::remove(file);
        write(file, {record("a", "one")});
        const std::string before = contentOf(file);
        store.noteUsed("localhost", bytesOf("a"), noon);
        store.noteRefused("localhost", bytesOf("a"));
        EXPECT_EQ(contentOf(former), before);
        struct stat status {};
        ASSERT_EQ(::stat(former.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0600U);
        store.noteAccepted("localhost", bytesOf("a"));
        EXPECT_FALSE(fs::exists(former));
    }
}

TEST_F(CredentialStoreUpgrade, OlderCopyIsNotReplaced) {
    writeSecondVersion(file, {record("a", "one")});
    std::ofstream(former) << "older";
    store.noteRefused("localhost", bytesOf("a"));
    EXPECT_EQ(contentOf(former), "older");
}

TEST_F(CredentialStoreUpgrade, WithoutACopyNothingIsChanged) {
    writeSecondVersion(file, {record("a", "one")});
    const std::string before = contentOf(file);
    fs::create_directory(former.string() + ".part");
    EXPECT_THROW(store.noteRefused("localhost", bytesOf("a")), Failure);
    EXPECT_EQ(contentOf(file), before);
}

TEST_F(CredentialStoreUpgrade, AllAreThoseOfEveryRelyingParty) {
    CredentialRecord elsewhere = record("b", "user");
    elsewhere.relyingPartyIdentifier = "example.org";
    EXPECT_TRUE(store.all().empty());
    store.save(record("a", "user"));
    store.save(elsewhere);
    EXPECT_EQ(store.all(), (std::vector{elsewhere, record("a", "user")}));
}

TEST_F(CredentialStoreUpgrade, RemovedPasskeyIsGoneAndNoOther) {
    for (const auto write : {&writeFirstVersion, &writeSecondVersion}) {
        fs::remove(file);
        write(file, {record("a", "one"), record("b", "two")});
        store.remove(bytesOf("unknown"));
        EXPECT_EQ(store.all().size(), 2U);
        store.remove(bytesOf("a"));
        ASSERT_EQ(store.all().size(), 1U);
        EXPECT_EQ(store.all().front().credentialId, bytesOf("b"));
        EXPECT_FALSE(fs::exists(former)) << "the copy holds the passkey, too";
    }
}

TEST_F(CredentialStoreUpgrade, KeeperThatIsNotKnownIsReported) {
    CredentialRecord strange = record("a", "one");
    strange.keeper = static_cast<KeyKeeper>(7);
    store.save(strange);
    EXPECT_THROW(store.find("localhost"), Failure);
}

} // namespace kelo
