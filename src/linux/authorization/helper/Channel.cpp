#include "linux/authorization/helper/Channel.h"

#include "posix/FileDescriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <thread>
#include <vector>

namespace kelo::authorization {

namespace {

/// A copy of a standard stream, which from then on is the replacement instead.
posix::FileDescriptor takeOver(int standard, int replacement) {
    posix::FileDescriptor kept(::fcntl(standard, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (replacement >= 0)
        ::dup2(replacement, standard);
    return kept;
}

posix::FileDescriptor emptyInput() {
    return posix::FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

void waitForHangUp(int input) {
    // poll() reports a hang-up even if no event is requested.
    pollfd watched{input, 0, 0};
    while (::poll(&watched, 1, -1) < 0 && errno == EINTR) {
    }
    ::_exit(EXIT_FAILURE);
}

} // namespace

Channel::Channel()
    : input(takeOver(STDIN_FILENO, emptyInput().get()).release()),
      output(takeOver(STDOUT_FILENO, STDERR_FILENO)) {}

std::optional<Message> Channel::receive() {
    std::array<char, 512> buffer;
    while (true) {
        if (auto message = reader.next())
            return message;
        const ssize_t count = reader.broken() ? 0 : ::read(input, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return std::nullopt;
        reader.feed(std::span(buffer.data(), static_cast<std::size_t>(count)));
        wipe(buffer.data(), buffer.size());
    }
}

bool Channel::send(MessageType type, std::string_view payload) {
    const std::vector<char> bytes = encode(type, payload);
    return posix::writeAll(output.get(), {bytes.data(), bytes.size()});
}

void Channel::endProcessWhenClosed() const {
    std::thread(waitForHangUp, input).detach();
}

} // namespace kelo::authorization
