#include "demo/http/ExchangeTimes.h"

#include "demo/base/ServiceError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>

#include <utility>

namespace kelo::demo {
namespace {

long long monotonicNanoseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

} // namespace

ExchangeTimes::ExchangeTimes(const std::filesystem::path& path)
    : file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC,
                  S_IRUSR | S_IWUSR)) {
    if (!file)
        throw ServiceError("Could not write the times to " + path.string() + ".");
}

void ExchangeTimes::follow(SoupServerMessage* message) const {
    write("asked", message);
    g_signal_connect(message, "wrote-headers",
                     G_CALLBACK(+[](SoupServerMessage* answered, gpointer self) {
                         static_cast<const ExchangeTimes*>(self)->write("served", answered);
                     }),
                     const_cast<ExchangeTimes*>(this));
}

void ExchangeTimes::write(const char* what, SoupServerMessage* message) const {
    const std::string line = std::string(what) + " " + soup_server_message_get_method(message) +
                             " " + g_uri_get_path(soup_server_message_get_uri(message)) + " " +
                             std::to_string(monotonicNanoseconds()) + "\n";
    posix::writeAll(file.get(), line);
}

} // namespace kelo::demo
