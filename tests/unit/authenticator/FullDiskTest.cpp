#include "Records.h"

#include "authenticator/store/CredentialStore.h"
#include "base/Failure.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

// A disk without room: a small file system in memory that only a process of the test's own sees.

namespace kelo {

namespace {

constexpr int asExpected = 0;
constexpr int notPossibleHere = 77;

/// A user namespace, so that mounting needs no privilege.
bool mountSmall(const char* limits, const std::filesystem::path& place) {
    const auto user = ::geteuid();
    const auto group = ::getegid();
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << user << " " << user << " 1";
    std::ofstream("/proc/self/gid_map") << group << " " << group << " 1";
    return ::mount("tmpfs", place.c_str(), "tmpfs", 0, limits) == 0;
}

int saveOnSmallDisk(const char* limits, const std::filesystem::path& place) {
    if (!mountSmall(limits, place))
        return notPossibleHere;
    try {
        authenticator::CredentialStore(place / "kelo" / "passkeys.sqlite").save(record("a", "u"));
    } catch (const Failure& error) {
        if (error.localizedDescription() == "There is no room left on the disk for your passkeys. "
                                            "Free some space and try again.")
            return asExpected;
        ADD_FAILURE() << error.localizedDescription();
    }
    return 1;
}

} // namespace

TEST(FullDisk, IsNamedWhereverTheRoomEnds) {
    // Room for no folder, for no file in it, and for no page in that.
    for (const char* limits : {"nr_inodes=1", "nr_inodes=2", "nr_inodes=10,size=4k"}) {
        const test::TemporaryFolder folder;
        const pid_t child = ::fork();
        if (child == 0)
            std::_Exit(saveOnSmallDisk(limits, folder.path()));
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status));
        if (WEXITSTATUS(status) == notPossibleHere)
            GTEST_SKIP() << "user namespaces are not allowed here";
        EXPECT_EQ(WEXITSTATUS(status), asExpected) << limits;
    }
}

} // namespace kelo
