#include "component/installer/PrivateMount.h"

#include "component/installer/Trees.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>

namespace kelo::tests {

namespace {

constexpr int notPossible = 77;

/// A user namespace, so that mounting needs no privilege.
bool enterNamespaces() {
    const auto user = ::geteuid();
    const auto group = ::getegid();
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << user << " " << user << " 1";
    std::ofstream("/proc/self/gid_map") << group << " " << group << " 1";
    return true;
}

} // namespace

void PrivateMount::makeReadOnly() const {
    if (::mount(nullptr, place.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
        std::_Exit(notPossible);
}

InsideResult inside(const PrivateMount& mount, const std::function<bool()>& action) {
    std::filesystem::create_directories(mount.place);
    const pid_t process = ::fork();
    if (process == 0) {
        const std::string options = "size=" + mount.size;
        if (!enterNamespaces() ||
            ::mount("tmpfs", mount.place.c_str(), "tmpfs", 0, options.c_str()) != 0)
            std::_Exit(notPossible);
        try {
            std::_Exit(action() ? 0 : 1);
        } catch (const std::exception& error) {
            std::cerr << error.what() << std::endl;
            std::_Exit(1);
        }
    }
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == notPossible)
        return InsideResult::notPossibleHere;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? InsideResult::held
                                                         : InsideResult::failed;
}

} // namespace kelo::tests
