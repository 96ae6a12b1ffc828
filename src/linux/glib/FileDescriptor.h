#pragma once

#include "posix/FileDescriptor.h"

namespace kelo::desktop {

using posix::FileDescriptor;

} // namespace kelo::desktop
