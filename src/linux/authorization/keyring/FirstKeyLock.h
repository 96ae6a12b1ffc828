#pragma once

#include "posix/FileDescriptor.h"

#include <stop_token>

namespace kelo::authorization {

/// Held by the one program of this user that makes the first wrapping key. The keyring replaces a
/// key by the next, so of two that are made at once one would be lost, and with it a passkey. The
/// lock is on a file in the user's runtime folder, and goes with the program.
class FirstKeyLock {
public:
    /// Waits for the program that holds it, or for the stop. Where there is no such folder, nothing
    /// is held.
    explicit FirstKeyLock(const std::stop_token& stop);

private:
    posix::FileDescriptor file;
};

} // namespace kelo::authorization
