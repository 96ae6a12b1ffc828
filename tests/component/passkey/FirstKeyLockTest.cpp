#include "linux/authorization/keyring/FirstKeyLock.h"

#include "testing/TemporaryFolder.h"

#include <fcntl.h>
#include <glib.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <optional>

namespace kelo {

using authorization::FirstKeyLock;

namespace {

class FirstKeyLockTest : public testing::Test {
protected:
    /// GLib asks for the folder once in a process.
    static void SetUpTestSuite() {
        static const test::TemporaryFolder folder;
        g_setenv("XDG_RUNTIME_DIR", folder.path().c_str(), TRUE);
    }
    static bool isFree() {
        const std::string path = std::string(g_get_user_runtime_dir()) + "/kelo-wrapping-key.lock";
        const posix::FileDescriptor file(::open(path.c_str(), O_RDWR | O_CLOEXEC));
        return file && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0;
    }
};

} // namespace

TEST_F(FirstKeyLockTest, IsHeldByOneAtATime) {
    std::optional<FirstKeyLock> held;
    held.emplace(std::stop_token());
    EXPECT_FALSE(isFree());
    held.reset();
    EXPECT_TRUE(isFree());
}

TEST_F(FirstKeyLockTest, NobodyWaitsForItAfterAStop) {
    const FirstKeyLock held((std::stop_token()));
    std::stop_source source;
    source.request_stop();
    const FirstKeyLock stopped(source.get_token());
    EXPECT_FALSE(isFree());
}

} // namespace kelo
