#include "updater/install/ProcessHandle.h"

// The header of glibc 2.36 leaves out that it declares a function of C.
extern "C" {
#include <sys/pidfd.h>
}

namespace kelo::updater {

posix::FileDescriptor processHandle(pid_t process) {
    return posix::FileDescriptor(::pidfd_open(process, 0));
}

} // namespace kelo::updater
