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

/// Whether the child was killed before its call number n; false when it came to its end.
bool saveAndDieAt(int n, const fs::path& file, const authenticator::CredentialRecord& record) {
    const pid_t child = ::fork();
    if (child == 0) {
        countChanges();
        callsLeft = n;
        authenticator::CredentialStore(file).save(record);
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

void expectPrivateJournal(const fs::path& file, int& journals) {
    struct stat status {};
    if (::stat((file.string() + "-journal").c_str(), &status) != 0)
        return;
    ++journals;
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

} // namespace

TEST(CredentialStoreKill, LeavesTheOldRecordOrTheNewOne) {
    const authenticator::CredentialRecord before = record("old", "user");
    const authenticator::CredentialRecord after = record("new", "user");
    const authenticator::CredentialRecord bystander = record("other", "somebody");
    int kills = 0, olds = 0, news = 0, journals = 0;
    for (bool killed = true; killed; ++kills) {
        const test::TemporaryFolder folder;
        const fs::path file = folder.path() / "kelo" / "passkeys.sqlite";
        const authenticator::CredentialStore store(file);
        store.save(bystander);
        store.save(before);
        killed = saveAndDieAt(kills, file, after);
        expectPrivateJournal(file, journals);
        const auto found = store.find("localhost");
        ASSERT_EQ(found.size(), 2U) << "killed at call " << kills;
        EXPECT_EQ(found[1], bystander);
        EXPECT_TRUE(found[0] == before || found[0] == after) << "killed at call " << kills;
        ++(found[0] == before ? olds : news);
        store.save(after);
        EXPECT_EQ(store.find("localhost").front(), after);
    }
    EXPECT_GT(kills, 5) << "the child was killed at many points";
    EXPECT_GT(olds, 0);
    EXPECT_GT(news, 0);
    EXPECT_GT(journals, 0);
}

TEST(CredentialStoreKill, LeavesAFileThatWorksWhenTheVeryFirstSaveIsKilled) {
    int kills = 0;
    for (bool killed = true; killed; ++kills) {
        const test::TemporaryFolder folder;
        const fs::path file = folder.path() / "kelo" / "passkeys.sqlite";
        const authenticator::CredentialStore store(file);
        killed = saveAndDieAt(kills, file, record("first", "user"));
        EXPECT_LE(store.find("localhost").size(), 1U);
        store.save(record("second", "user"));
        EXPECT_EQ(store.find("localhost"), std::vector{record("second", "user")});
    }
    EXPECT_GT(kills, 5);
}

} // namespace kelo
