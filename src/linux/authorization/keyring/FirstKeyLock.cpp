#include "linux/authorization/keyring/FirstKeyLock.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/file.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>

namespace kelo::authorization {

namespace {

// A lock cannot be waited for together with something else.
constexpr std::chrono::milliseconds betweenAttempts{20};

} // namespace

FirstKeyLock::FirstKeyLock(const std::stop_token& stop) {
    const auto path = std::filesystem::path(g_get_user_runtime_dir()) / "kelo-wrapping-key.lock";
    file = posix::FileDescriptor(
        ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (!file) {
        g_message("passkey: cannot lock %s", path.c_str());
        return;
    }
    std::mutex mutex;
    std::condition_variable_any stopped;
    std::unique_lock waiting(mutex);
    while (!stop.stop_requested() && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0)
        stopped.wait_for(waiting, stop, betweenAttempts, [] { return false; });
}

} // namespace kelo::authorization
