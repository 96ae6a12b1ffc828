#pragma once

#include "base/Bytes.h"

#include <unistd.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kelo::posix {

/// Owns an open file descriptor; -1 is none.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor(std::exchange(other.descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor, other.descriptor);
        return *this;
    }
    ~FileDescriptor() {
        if (descriptor >= 0)
            ::close(descriptor);
    }

    int get() const { return descriptor; }
    /// Hands the descriptor over; the caller closes it.
    int release() { return std::exchange(descriptor, -1); }
    explicit operator bool() const { return descriptor >= 0; }

private:
    int descriptor = -1;
};

/// Writes all bytes at the descriptor's offset, in several calls if need be. False on failure, with
/// errno set; part of the bytes may have been written then. Blocks.
bool writeAll(int descriptor, ByteView bytes);
bool writeAll(int descriptor, std::string_view text);

/// Reads from the descriptor's offset to the end of the file. Nothing on failure, or when there are
/// more bytes than the limit. Blocks.
std::optional<std::string> readAll(int descriptor, std::size_t limit);

} // namespace kelo::posix
