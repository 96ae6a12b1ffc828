#include "posix/FileDescriptor.h"

#include <cerrno>

namespace kelo::posix {

bool writeAll(int descriptor, ByteView bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

bool writeAll(int descriptor, std::string_view text) {
    return writeAll(descriptor,
                    ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

std::optional<std::string> readAll(int descriptor, std::size_t limit) {
    // One byte more than allowed shows that there is more.
    std::string content(limit + 1, '\0');
    std::size_t length = 0;
    while (length < content.size()) {
        const ssize_t count = ::read(descriptor, content.data() + length, content.size() - length);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            break;
        length += static_cast<std::size_t>(count);
    }
    if (length > limit)
        return std::nullopt;
    content.resize(length);
    return content;
}

} // namespace kelo::posix
