#include "Records.h"

#include "authenticator/store/CredentialStore.h"
#include "base/Failure.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>
#include <functional>
#include <iterator>
#include <memory>

// What the store does about a file that other hands touched: a schema with code in it, another
// program that writes at the same time, a link that is put in place in between.

namespace kelo {

using namespace authenticator;
namespace fs = std::filesystem;

namespace {

using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

/// SQLite's way to the system, with steps of the test's own in it for as long as this lives.
class Interposed {
public:
    Interposed() { current = this; }
    Interposed(const Interposed&) = delete;
    Interposed& operator=(const Interposed&) = delete;
    ~Interposed() {
        system->xSleep = sleep;
        for (const char* name : {"lstat", "unlink", "openDirectory"})
            system->xSetSystemCall(system, name, nullptr);
        current = nullptr;
    }

    /// Run in place of every pause between two tries to get a lock.
    void whenWaiting(std::function<void()> action) {
        waiting = std::move(action);
        system->xSleep = [](sqlite3_vfs*, int microseconds) {
            current->waiting();
            return microseconds;
        };
    }
    /// Run once, when SQLite looks whether the path leads through links.
    void whenLookingForLinks(std::function<void()> action) {
        looking = std::move(action);
        replace("lstat", &Interposed::lookForLinks, originalLstat);
    }
    /// Notes each file that is removed and each folder that is opened to be synced.
    void noteRemovalsAndFolders() {
        replace("unlink", &Interposed::remove, originalUnlink);
        replace("openDirectory", &Interposed::openFolder, originalOpenDirectory);
    }

    std::vector<std::string> notes;

private:
    using Lstat = int (*)(const char*, struct stat*);
    using Unlink = int (*)(const char*);
    using OpenDirectory = int (*)(const char*, int*);

    template <typename Call>
    void replace(const char* name, Call call, Call& original) {
        original = reinterpret_cast<Call>(system->xGetSystemCall(system, name));
        ASSERT_EQ(system->xSetSystemCall(system, name, reinterpret_cast<sqlite3_syscall_ptr>(call)),
                  SQLITE_OK);
    }
    static int lookForLinks(const char* path, struct stat* status) {
        if (const auto action = std::exchange(current->looking, nullptr))
            action();
        return current->originalLstat(path, status);
    }
    static int remove(const char* path) {
        current->notes.push_back("removes " + fs::path(path).filename().string());
        return current->originalUnlink(path);
    }
    static int openFolder(const char* path, int* descriptor) {
        current->notes.emplace_back("syncs the folder");
        return current->originalOpenDirectory(path, descriptor);
    }

    static inline Interposed* current = nullptr;
    sqlite3_vfs* system = sqlite3_vfs_find(nullptr);
    int (*sleep)(sqlite3_vfs*, int) = system->xSleep;
    Lstat originalLstat = nullptr;
    Unlink originalUnlink = nullptr;
    OpenDirectory originalOpenDirectory = nullptr;
    std::function<void()> waiting;
    std::function<void()> looking;
};

class CredentialStoreDefence : public testing::Test {
protected:
    Connection connect() const {
        fs::create_directories(file.parent_path());
        sqlite3* raw = nullptr;
        EXPECT_EQ(sqlite3_open(file.c_str(), &raw), SQLITE_OK);
        return {raw, &sqlite3_close};
    }
    static void execute(const Connection& connection, const char* sql) {
        EXPECT_EQ(sqlite3_exec(connection.get(), sql, nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(connection.get());
    }
    static std::string contentOf(const fs::path& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /// The sentence of the failure; empty when there is none.
    static std::string failureOf(const std::function<void()>& operation) {
        try {
            operation();
        } catch (const Failure& error) {
            EXPECT_EQ(error.kind(), FailureKind::storage);
            return error.localizedDescription();
        }
        return "";
    }

    test::TemporaryFolder folder;
    fs::path file = folder.path() / "kelo" / "passkeys.sqlite";
    authenticator::CredentialStore store{file};
};

} // namespace

TEST_F(CredentialStoreDefence, TriggersInTheFileDoNotRun) {
    store.save(record("a", "u"));
    execute(connect(), "CREATE TRIGGER t AFTER INSERT ON passkey"
                       " BEGIN UPDATE passkey SET account_name = 'changed'; END");
    store.save(record("b", "v"));
    for (const authenticator::CredentialRecord& kept : store.find("localhost"))
        EXPECT_NE(kept.accountName, "changed");
}

TEST_F(CredentialStoreDefence, ViewsInTheFileAreNotRead) {
    store.save(record("a", "u"));
    execute(connect(), "ALTER TABLE passkey RENAME TO kept;"
                       "CREATE VIEW passkey AS SELECT * FROM kept");
    EXPECT_NE(failureOf([&] { store.find("localhost"); }), "");
}

TEST_F(CredentialStoreDefence, FunctionsThatTheFileNamesAreNotCalled) {
    static int calls = 0;
    const auto offerSpy = [](sqlite3* connection, char**, const sqlite3_api_routines*) {
        return sqlite3_create_function(
            connection, "spy", 0, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr,
            [](sqlite3_context* context, int, sqlite3_value**) {
                ++calls;
                sqlite3_result_int(context, 1);
            },
            nullptr, nullptr);
    };
    int (*const offer)(sqlite3*, char**, const sqlite3_api_routines*) = offerSpy;
    const auto entry = reinterpret_cast<void (*)()>(offer);
    store.save(record("a", "u"));
    sqlite3_auto_extension(entry);
    execute(connect(), "CREATE INDEX i ON passkey (user_id) WHERE spy() = 1");
    calls = 0;
    EXPECT_NE(failureOf([&] { store.save(record("b", "v")); }), "");
    EXPECT_EQ(calls, 0);
    sqlite3_cancel_auto_extension(entry);
}

TEST_F(CredentialStoreDefence, ALinkPutInPlaceAtTheLastMomentIsRefused) {
    const fs::path target = folder.path() / "target";
    authenticator::CredentialStore(target).save(record("a", "u"));
    const std::string before = contentOf(target);
    store.save(record("b", "v"));
    Interposed sqlite;
    sqlite.whenLookingForLinks([&] {
        fs::remove(file);
        fs::create_symlink(target, file);
    });
    EXPECT_NE(failureOf([&] { store.save(record("c", "w")); }), "");
    EXPECT_EQ(contentOf(target), before);
}

TEST_F(CredentialStoreDefence, AnotherWriterIsWaitedFor) {
    store.save(record("a", "u"));
    const Connection other = connect();
    execute(other, "BEGIN IMMEDIATE");
    Interposed sqlite;
    sqlite.whenWaiting([&] { execute(other, "COMMIT"); });
    EXPECT_EQ(failureOf([&] { store.save(record("b", "v")); }), "");
    EXPECT_EQ(store.find("localhost").size(), 2U);
}

TEST_F(CredentialStoreDefence, AWriterThatDoesNotEndIsNamedAfterFiveSeconds) {
    store.save(record("a", "u"));
    const Connection other = connect();
    execute(other, "BEGIN IMMEDIATE");
    Interposed sqlite;
    int pauses = 0;
    sqlite.whenWaiting([&] { ++pauses; });
    EXPECT_EQ(failureOf([&] { store.save(record("b", "v")); }),
              "Another program is using the file with your passkeys. Try again in a moment.");
    EXPECT_GT(pauses, 10);
}

TEST_F(CredentialStoreDefence, TwoFirstSavesAtOnceBothCount) {
    std::ofstream((connect(), file)).close();
    const Connection other = connect();
    execute(other, "BEGIN IMMEDIATE");
    Interposed sqlite;
    bool waited = false;
    sqlite.whenWaiting([&] {
        if (std::exchange(waited, true))
            return;
        execute(other, "COMMIT");
        EXPECT_EQ(failureOf([&] { authenticator::CredentialStore(file).save(record("a", "u")); }),
                  "");
    });
    EXPECT_EQ(failureOf([&] { store.save(record("b", "v")); }), "");
    EXPECT_TRUE(waited);
    EXPECT_EQ(store.find("localhost").size(), 2U);
}

TEST_F(CredentialStoreDefence, AFileThatIsTakenAwayWhileItIsWrittenIsReported) {
    store.save(record("a", "u"));
    const Connection other = connect();
    execute(other, "BEGIN IMMEDIATE");
    Interposed sqlite;
    sqlite.whenWaiting([&] {
        execute(other, "COMMIT");
        fs::remove(file);
    });
    // SQLite gives a finer code for this kind of "read only".
    EXPECT_EQ(failureOf([&] { store.save(record("b", "v")); }),
              "Kelo may not write the file with your passkeys. Check the permissions of its folder "
              "and try again.");
}

TEST_F(CredentialStoreDefence, AFailedSaveLeavesTheFormerPasskey) {
    store.save(record("a", "one"));
    store.save(record("b", "two"));
    // The identifier is taken, by another user's passkey.
    EXPECT_NE(failureOf([&] { store.save(record("a", "two")); }), "");
    EXPECT_EQ(store.find("localhost").size(), 2U);
}

TEST_F(CredentialStoreDefence, OtherProgramsLogSurvivesThatItWasLookedAt) {
    {
        const Connection other = connect();
        execute(other, "PRAGMA journal_mode = WAL; CREATE TABLE notes (x)");
        // As a program leaves it that was killed.
        sqlite3_db_config(other.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    }
    const fs::path log = file.string() + "-wal";
    const std::string before = contentOf(log);
    ASSERT_NE(before, "");
    EXPECT_NE(failureOf([&] { store.find("localhost"); }), "");
    EXPECT_NE(failureOf([&] { store.save(record("a", "u")); }), "");
    EXPECT_EQ(contentOf(log), before);
}

TEST_F(CredentialStoreDefence, DamageThatNoQueryTouchesIsReported) {
    authenticator::CredentialRecord large = record("a", "u");
    large.relyingPartyIdentifier = "example.org";
    large.wrappedPrivateKey = Bytes(20'000, 7);
    store.save(large);
    store.save(record("b", "v"));
    // The last page ends the large record; where it names the next one, it names none that exists.
    const auto size = fs::file_size(file);
    std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(static_cast<std::streamoff>(size - 4096));
    stream.write("\xFF\xFF\xFF\xFF", 4);
    stream.close();
    EXPECT_NE(failureOf([&] { store.find("localhost"); }).find("is damaged"), std::string::npos);
}

TEST_F(CredentialStoreDefence, AFileOfOursWithoutAVersionIsDamaged) {
    store.save(record("a", "u"));
    execute(connect(), "PRAGMA user_version = 0");
    EXPECT_NE(failureOf([&] { store.find("localhost"); }).find("is damaged"), std::string::npos);
}

TEST_F(CredentialStoreDefence, AReplacedPrivateKeyDoesNotLinger) {
    authenticator::CredentialRecord old = record("a", "u");
    old.wrappedPrivateKey = bytesOf("the key that must not linger");
    store.save(old);
    store.save(record("b", "u"));
    store.noteAccepted("localhost", bytesOf("b"));
    EXPECT_EQ(contentOf(file).find("must not linger"), std::string::npos);
}

TEST_F(CredentialStoreDefence, TheFolderIsSyncedAfterTheJournalIsGone) {
    store.save(record("a", "u"));
    Interposed sqlite;
    sqlite.noteRemovalsAndFolders();
    store.save(record("b", "v"));
    ASSERT_GE(sqlite.notes.size(), 2U);
    const std::vector<std::string> end(sqlite.notes.end() - 2, sqlite.notes.end());
    EXPECT_EQ(end,
              (std::vector<std::string>{"removes passkeys.sqlite-journal", "syncs the folder"}));
}

} // namespace kelo
