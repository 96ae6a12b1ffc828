#pragma once

#include "posix/FileDescriptor.h"

#include <libsoup/soup.h>

#include <filesystem>
#include <string>

namespace kelo::demo {

/// Writes down when requests came and when their answers began: for each a line "asked GET /login
/// 4711" and a line "served GET /login 4712", in nanoseconds of CLOCK_MONOTONIC. Queries are left
/// out, because they hold secrets.
class ExchangeTimes {
public:
    /// Starts the file anew. Throws ServiceError.
    explicit ExchangeTimes(const std::filesystem::path& file);

    /// Of a request whose headers have just come. This object must outlive the message.
    void follow(SoupServerMessage* message) const;

private:
    void write(const char* what, SoupServerMessage* message) const;

    posix::FileDescriptor file;
};

} // namespace kelo::demo
