#pragma once

#include "posix/FileDescriptor.h"

namespace kelo::updater {

using posix::FileDescriptor;

} // namespace kelo::updater
