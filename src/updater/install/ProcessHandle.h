#pragma once

#include "posix/FileDescriptor.h"

#include <sys/types.h>

namespace kelo::updater {

/// A descriptor of the process that is ready to read once everything of the process is closed. None
/// where the system has no such thing (an old kernel, a strict sandbox).
posix::FileDescriptor processHandle(pid_t process);

} // namespace kelo::updater
