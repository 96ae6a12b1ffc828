#pragma once

#include <unistd.h>

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

} // namespace kelo::posix
