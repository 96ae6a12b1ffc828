#include "Records.h"

#include "authenticator/store/CredentialStore.h"
#include "base/Failure.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>
#include <memory>

namespace kelo {

using namespace authenticator;
namespace fs = std::filesystem;

namespace {

class CredentialStoreTest : public testing::Test {
protected:
    std::string content() const {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    void write(const std::string& text) const {
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
    }
    void execute(const char* sql) const {
        fs::create_directories(file.parent_path());
        sqlite3* raw = nullptr;
        ASSERT_EQ(sqlite3_open(file.c_str(), &raw), SQLITE_OK);
        const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> connection(raw, sqlite3_close);
        ASSERT_EQ(sqlite3_exec(raw, sql, nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(raw);
    }
    static mode_t modeOf(const fs::path& path) {
        struct stat status {};
        EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777;
    }
    /// Every operation refuses with this sentence and changes nothing.
    void expectRefused(const std::string& sentence) const {
        const std::string before = content();
        const auto refuses = [&](auto operation) {
            try {
                operation();
                ADD_FAILURE() << "was not refused";
            } catch (const Failure& error) {
                EXPECT_EQ(error.kind(), FailureKind::storage);
                EXPECT_NE(error.localizedDescription().find(sentence), std::string::npos)
                    << error.localizedDescription() << " (" << error.cause() << ")";
            }
        };
        refuses([&] { store.find("localhost"); });
        refuses([&] { store.save(record("c", "u")); });
        refuses([&] { store.noteAccepted("localhost", bytesOf("a")); });
        refuses([&] { store.noteRefused("localhost", bytesOf("a")); });
        EXPECT_EQ(content(), before);
    }

    test::TemporaryFolder folder;
    fs::path file = folder.path() / "data" / "kelo" / "passkeys.sqlite";
    authenticator::CredentialStore store{file};
};

} // namespace

TEST_F(CredentialStoreTest, KeepsEveryFieldAcrossInstances) {
    const authenticator::CredentialRecord kept = record("id", "user");
    store.save(kept);
    EXPECT_EQ(authenticator::CredentialStore(file).find("localhost"), std::vector{kept});
}

TEST_F(CredentialStoreTest, KeepsBytesAndTextsAsTheyAre) {
    authenticator::CredentialRecord kept =
        record(std::string("\0\xFF'", 3), std::string("\0\0", 2));
    kept.accountName = "Zo\u00eb \"); DROP TABLE credential; --";
    store.save(kept);
    EXPECT_EQ(store.find("localhost"), std::vector{kept});
    authenticator::CredentialRecord nameless = record("other", "user");
    nameless.accountName.clear();
    store.save(nameless);
    EXPECT_EQ(store.find("localhost"), (std::vector{nameless, kept}));
}

TEST_F(CredentialStoreTest, KeepsOtherUsersAndOtherRelyingParties) {
    authenticator::CredentialRecord elsewhere = record("c", "one");
    elsewhere.relyingPartyIdentifier = "example.org";
    store.save(record("a", "one"));
    store.save(record("b", "two"));
    store.save(elsewhere);
    EXPECT_EQ(store.find("localhost"), (std::vector{record("b", "two"), record("a", "one")}));
    EXPECT_EQ(store.find("example.org"), std::vector{elsewhere});
    EXPECT_TRUE(store.find("LOCALHOST").empty());
}

TEST_F(CredentialStoreTest, TheLastSavedComesFirstWhateverTheClockSays) {
    authenticator::CredentialRecord afterTheClockWasSetBack = record("b", "two");
    afterTheClockWasSetBack.created -= std::chrono::hours(24);
    store.save(record("a", "one"));
    store.save(afterTheClockWasSetBack);
    EXPECT_EQ(store.find("localhost"), (std::vector{afterTheClockWasSetBack, record("a", "one")}));
}

TEST_F(CredentialStoreTest, LookingTouchesNothingBeforeTheFirstPasskey) {
    EXPECT_TRUE(store.find("localhost").empty());
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(CredentialStoreTest, FileAndFolderAreForTheirOwnerOnly) {
    const mode_t before = ::umask(0);
    store.save(record("a", "u"));
    ::umask(before);
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(modeOf(file.parent_path()), 0700U);
}

TEST_F(CredentialStoreTest, FileAndFolderThatStoodOpenAreClosed) {
    store.save(record("a", "u"));
    fs::permissions(file, fs::perms(0644));
    fs::permissions(file.parent_path(), fs::perms(0755));
    store.save(record("b", "v"));
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(modeOf(file.parent_path()), 0700U);
}

TEST_F(CredentialStoreTest, EmptyFileIsAFreshStart) {
    write("");
    EXPECT_TRUE(store.find("localhost").empty());
    store.save(record("a", "u"));
    EXPECT_EQ(store.find("localhost").size(), 1U);
}

TEST_F(CredentialStoreTest, FileThatIsNoDatabaseIsReportedAndLeftUntouched) {
    write(std::string(5000, 'x'));
    expectRefused("is damaged. It was left as it is");
}

TEST_F(CredentialStoreTest, TruncatedFileIsReportedAndLeftUntouched) {
    store.save(record("a", "u"));
    fs::resize_file(file, fs::file_size(file) / 2);
    expectRefused("is damaged. It was left as it is");
}

TEST_F(CredentialStoreTest, DamagedPageIsReportedAndLeftUntouched) {
    store.save(record("a", "u"));
    std::string bytes = content();
    bytes.replace(4096, 64, std::string(64, '\xAA'));
    write(bytes);
    expectRefused("is damaged. It was left as it is");
}

TEST_F(CredentialStoreTest, RecordOfAnotherShapeIsReported) {
    store.save(record("a", "u"));
    execute("UPDATE passkey SET public_key = x'00'");
    EXPECT_THROW(store.find("localhost"), Failure);
}

TEST_F(CredentialStoreTest, NewerFileIsReportedAndLeftUntouched) {
    store.save(record("a", "u"));
    execute("PRAGMA user_version = 4");
    expectRefused("written by a newer version of Kelo");
}

TEST_F(CredentialStoreTest, OtherProgramsFileIsReportedAndLeftUntouched) {
    execute("PRAGMA application_id = 42; CREATE TABLE credential (x)");
    expectRefused("belongs to another program");
}

TEST_F(CredentialStoreTest, OtherProgramsUnmarkedFileIsReportedAndLeftUntouched) {
    execute("CREATE TABLE credential (x)");
    expectRefused("belongs to another program");
}

TEST_F(CredentialStoreTest, OtherProgramsLogIsLeftAlone) {
    execute("PRAGMA journal_mode = WAL; CREATE TABLE notes (x)");
    expectRefused("belongs to another program");
}

TEST_F(CredentialStoreTest, SymbolicLinkIsRefused) {
    const fs::path target = folder.path() / "target";
    fs::create_directories(file.parent_path());
    std::ofstream(target).close();
    fs::create_symlink(target, file);
    expectRefused("something else in the place of the file");
    EXPECT_EQ(fs::file_size(target), 0U);
    fs::remove(target);
    expectRefused("something else in the place of the file");
    EXPECT_FALSE(fs::exists(target));
}

TEST_F(CredentialStoreTest, FolderBehindASymbolicLinkIsFine) {
    fs::create_directory(folder.path() / "elsewhere");
    fs::create_symlink(folder.path() / "elsewhere", folder.path() / "data");
    store.save(record("a", "u"));
    EXPECT_EQ(store.find("localhost").size(), 1U);
}

TEST_F(CredentialStoreTest, FolderInPlaceOfTheFileIsReported) {
    fs::create_directories(file);
    EXPECT_THROW(store.find("localhost"), Failure);
    EXPECT_THROW(store.save(record("a", "u")), Failure);
}

TEST_F(CredentialStoreTest, FileInPlaceOfTheFolderIsReported) {
    std::ofstream(folder.path() / "data").close();
    EXPECT_THROW(store.save(record("a", "u")), Failure);
}

} // namespace kelo
