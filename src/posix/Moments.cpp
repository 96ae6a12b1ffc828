#include "posix/Moments.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace kelo::posix {

namespace {

constexpr const char* variable = "KELO_MOMENTS";

std::optional<int> numberIn(const char* value) {
    const std::string_view text(value);
    int number = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

bool isOpenForWriting(int descriptor) {
    const int flags = ::fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

} // namespace

int detail::momentSink = -1;

void followMoments() {
    const char* const value = std::getenv(variable);
    if (!value)
        return;
    const auto descriptor = numberIn(value);
    ::unsetenv(variable);
    if (!descriptor || *descriptor <= STDERR_FILENO || !isOpenForWriting(*descriptor))
        return;
    ::fcntl(*descriptor, F_SETFD, FD_CLOEXEC);
    detail::momentSink = *descriptor;
}

bool momentsAreFollowed() {
    return detail::momentSink >= 0;
}

void detail::tellMoment(Moment moment) {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    char line[64];
    const auto name = momentNames[static_cast<std::size_t>(moment)];
    const int length =
        std::snprintf(line, sizeof line, "%.*s %lld%09ld\n", static_cast<int>(name.size()),
                      name.data(), static_cast<long long>(now.tv_sec), now.tv_nsec);
    // One call, so that lines of two threads do not mix. Nobody is helped by a report of a failure.
    if (::write(detail::momentSink, line, static_cast<std::size_t>(length)) != length)
        detail::momentSink = -1;
}

} // namespace kelo::posix
