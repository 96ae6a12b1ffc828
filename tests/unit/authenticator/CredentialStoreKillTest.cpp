#include "EarlierVersions.h"
#include "Records.h"

#include "authenticator/store/CredentialStore.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <functional>
#include <string>
#include <utility>

// What a kill -9 leaves: a child saves a record and is killed right before its n-th call that
// changes anything on disk, for every n there is. (What a call changed is visible to everyone at
// once, so no other instant leaves another state.)

namespace kelo {

using namespace authenticator;
namespace fs = std::filesystem;

namespace {

int callsLeft = 0;

void countCall() {
    if (callsLeft-- == 0)
        ::raise(SIGKILL);
}

template <int slot, typename Result, typename... Arguments>
struct Counted {
    static inline Result (*original)(Arguments...) = nullptr;
    static Result call(Arguments... arguments) {
        countCall();
        return original(arguments...);
    }
};

template <int slot, typename Result, typename... Arguments>
void countCalls(sqlite3_vfs* system, const char* name, Result (*)(Arguments...)) {
    using Wrapper = Counted<slot, Result, Arguments...>;
    Wrapper::original =
        reinterpret_cast<Result (*)(Arguments...)>(system->xGetSystemCall(system, name));
    if (!Wrapper::original) // this build of SQLite does without it
        return;
    ASSERT_EQ(
        system->xSetSystemCall(system, name, reinterpret_cast<sqlite3_syscall_ptr>(&Wrapper::call)),
        SQLITE_OK);
}

void countChanges() {
    sqlite3_vfs* system = sqlite3_vfs_find(nullptr);
    countCalls<0>(system, "open", static_cast<int (*)(const char*, int, int)>(nullptr));
    countCalls<1>(system, "write", static_cast<ssize_t (*)(int, const void*, size_t)>(nullptr));
    using WriteAt = ssize_t (*)(int, const void*, size_t, off_t);
    countCalls<2>(system, "pwrite", static_cast<WriteAt>(nullptr));
    countCalls<3>(system, "pwrite64", static_cast<WriteAt>(nullptr));
    countCalls<4>(system, "ftruncate", static_cast<int (*)(int, off_t)>(nullptr));
    countCalls<5>(system, "unlink", static_cast<int (*)(const char*)>(nullptr));
}

using Change = std::function<void(const authenticator::CredentialStore&)>;

/// Whether the child was killed before its call number n; false when it came to its end.
bool dieAt(int n, const fs::path& file, const Change& change) {
    const pid_t child = ::fork();
    if (child == 0) {
        countChanges();
        callsLeft = n;
        change(authenticator::CredentialStore(file));
        ::_exit(0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    if (WIFEXITED(status)) {
        EXPECT_EQ(WEXITSTATUS(status), 0);
        return false;
    }
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    return true;
}

Change saving(authenticator::CredentialRecord record) {
    return [record = std::move(record)](const authenticator::CredentialStore& store) {
        store.save(record);
    };
}

Change accepting(std::string credentialId) {
    return [id = std::move(credentialId)](const authenticator::CredentialStore& store) {
        store.noteAccepted("localhost", bytesOf(id));
    };
}

void expectPrivateJournal(const fs::path& file, int& journals) {
    struct stat status {};
    if (::stat((file.string() + "-journal").c_str(), &status) != 0)
        return;
    ++journals;
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

} // namespace

TEST(CredentialStoreKill, ASaveNeverCostsAFormerRecord) {
    const authenticator::CredentialRecord before = record("old", "user");
    const authenticator::CredentialRecord after = record("new", "user");
    const authenticator::CredentialRecord bystander = record("other", "somebody");
    int kills = 0, without = 0, with = 0, journals = 0;
    for (bool killed = true; killed; ++kills) {
        const test::TemporaryFolder folder;
        const fs::path file = folder.path() / "kelo" / "passkeys.sqlite";
        const authenticator::CredentialStore store(file);
        store.save(bystander);
        store.save(before);
        killed = dieAt(kills, file, saving(after));
        expectPrivateJournal(file, journals);
        const auto found = store.find("localhost");
        if (found == std::vector{before, bystander})
            ++without;
        else if (found == std::vector{after, before, bystander})
            ++with;
        else
            ADD_FAILURE() << "killed at call " << kills;
        store.save(record("next", "user"));
        EXPECT_EQ(store.find("localhost").front(), record("next", "user"));
    }
    EXPECT_GT(kills, 5) << "the child was killed at many points";
    EXPECT_GT(without, 0);
    EXPECT_GT(with, 0);
    EXPECT_GT(journals, 0);
}

TEST(CredentialStoreKill, TheFormerRecordGoesOnlyTogetherWithTheNoteThatTheNewOneIsAccepted) {
    int kills = 0, both = 0, one = 0;
    for (bool killed = true; killed; ++kills) {
        const test::TemporaryFolder folder;
        const fs::path file = folder.path() / "kelo" / "passkeys.sqlite";
        const authenticator::CredentialStore store(file);
        store.save(record("old", "user"));
        store.noteAccepted("localhost", bytesOf("old"));
        store.save(record("new", "user"));
        killed = dieAt(kills, file, accepting("new"));
        const auto found = store.find("localhost");
        ASSERT_FALSE(found.empty()) << "killed at call " << kills;
        EXPECT_EQ(found[0].credentialId, bytesOf("new"));
        ++(found.size() == 2 ? both : one);
        // Surplus of the account: only an accepted record stands it.
        for (int n = 0; n < 5; ++n)
            store.save(record("refused " + std::to_string(n), "user"));
        const auto kept = store.find("localhost");
        ASSERT_EQ(kept.size(), 5U);
        EXPECT_EQ(kept.back().credentialId, bytesOf(found.size() == 2 ? "old" : "new"));
    }
    EXPECT_GT(kills, 5);
    EXPECT_GT(both, 0);
    EXPECT_GT(one, 0);
}

TEST(CredentialStoreKill, LeavesAFileThatWorksWhenTheVeryFirstSaveIsKilled) {
    int kills = 0;
    for (bool killed = true; killed; ++kills) {
        const test::TemporaryFolder folder;
        const fs::path file = folder.path() / "kelo" / "passkeys.sqlite";
        const authenticator::CredentialStore store(file);
        killed = dieAt(kills, file, saving(record("first", "user")));
        EXPECT_LE(store.find("localhost").size(), 1U);
        store.save(record("second", "user"));
        EXPECT_EQ(store.find("localhost").front(), record("second", "user"));
    }
    EXPECT_GT(kills, 5);
}

TEST(CredentialStoreKill, AnUpgradeThatIsKilledLosesNothing) {
    int kills = 0, journals = 0;
    for (bool killed = true; killed; ++kills) {
        const test::TemporaryFolder folder;
        const fs::path file = folder.path() / "kelo" / "passkeys.sqlite";
        writeFirstVersion(file, {record("a", "one"), record("b", "two")});
        const authenticator::CredentialStore store(file);
        killed = dieAt(kills, file, accepting("a"));
        expectPrivateJournal(file, journals);
        EXPECT_EQ(store.find("localhost"),
                  (std::vector{acceptedRecord("b", "two"), acceptedRecord("a", "one")}))
            << "killed at call " << kills;
    }
    EXPECT_GT(kills, 5);
    EXPECT_GT(journals, 0);
}

} // namespace kelo
