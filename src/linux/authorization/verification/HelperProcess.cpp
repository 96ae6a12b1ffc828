#include "linux/authorization/verification/HelperProcess.h"

#include "base/SecretText.h"

#include <fcntl.h>
#include <glib-unix.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace kelo::authorization {

namespace {

struct StringVectorDeleter {
    void operator()(char** texts) const { g_strfreev(texts); }
};
using StringVector = std::unique_ptr<char*, StringVectorDeleter>;

StringVector environment(const std::vector<std::string>& extra) {
    char** variables = g_get_environ();
    for (const std::string& assignment : extra) {
        const std::size_t equals = assignment.find('=');
        if (equals == std::string::npos)
            continue;
        variables = g_environ_setenv(variables, assignment.substr(0, equals).c_str(),
                                     assignment.substr(equals + 1).c_str(), TRUE);
    }
    return StringVector(variables);
}

using EndContinuation = CheckedContinuation<bool>;

void onEnd(GObject* process, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<EndContinuation> waiting(static_cast<EndContinuation*>(data));
    auto* subprocess = G_SUBPROCESS(process);
    const bool waited = g_subprocess_wait_finish(subprocess, result, nullptr);
    waiting->resume(waited && g_subprocess_get_if_exited(subprocess) &&
                    g_subprocess_get_exit_status(subprocess) == 0);
}

} // namespace

std::unique_ptr<HelperProcess>
HelperProcess::start(const std::filesystem::path& program,
                     const std::vector<std::string>& extraEnvironment) {
    // Sockets instead of pipes: MSG_NOSIGNAL avoids a signal if the helper has died.
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        g_warning("user verification: cannot create a socket pair: %s", g_strerror(errno));
        return nullptr;
    }
    posix::FileDescriptor ours(ends[0]);
    posix::FileDescriptor input(ends[1]);
    posix::FileDescriptor output(::fcntl(input.get(), F_DUPFD_CLOEXEC, 0));
    if (output.get() < 0 || !g_unix_set_fd_nonblocking(ours.get(), TRUE, nullptr))
        return nullptr;

    const auto launcher = gobject::GObjectPointer<GSubprocessLauncher>::adopt(
        g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_NONE));
    const StringVector variables = environment(extraEnvironment);
    g_subprocess_launcher_set_environ(launcher.get(), variables.get());
    g_subprocess_launcher_take_stdin_fd(launcher.get(), input.release());
    g_subprocess_launcher_take_stdout_fd(launcher.get(), output.release());
    GError* error = nullptr;
    auto process = gobject::GObjectPointer<GSubprocess>::adopt(
        g_subprocess_launcher_spawn(launcher.get(), &error, program.c_str(), nullptr));
    const gobject::GErrorPointer failure(error);
    if (!process) {
        g_warning("user verification: cannot start %s: %s", program.c_str(), failure->message);
        return nullptr;
    }
    return std::unique_ptr<HelperProcess>(new HelperProcess(std::move(process), std::move(ours)));
}

HelperProcess::HelperProcess(gobject::GObjectPointer<GSubprocess> process,
                             posix::FileDescriptor socket)
    : process(std::move(process)), socket(std::move(socket)) {
    watch.emplace(this->socket.get(), [this] { readable(); });
}

HelperProcess::~HelperProcess() {
    g_subprocess_force_exit(process.get());
}

bool HelperProcess::send(MessageType type, std::string_view payload) const {
    std::vector<char> bytes = encode(type, payload);
    // A message is much smaller than the socket's buffer. If it does not fit, the helper does not
    // read and is therefore faulty.
    const ssize_t sent =
        ::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    wipe(bytes.data(), bytes.size());
    return sent == static_cast<ssize_t>(bytes.size());
}

bool HelperProcess::spokeOutOfTurn() {
    // Include what it has sent in this iteration of the main loop.
    return !read() || reader.midMessage();
}

Task<std::optional<Message>> HelperProcess::receive() {
    if (auto message = reader.next())
        co_return message;
    if (closed_.cancelled())
        co_return std::nullopt;
    auto wait = [this](Waiting continuation) {
        waiting = std::move(continuation);
        deliver();
    };
    co_return co_await withCheckedContinuation<std::optional<Message>>(std::move(wait));
}

Task<bool> HelperProcess::endedWell() {
    if (reader.broken() || reader.midMessage())
        co_return false;
    auto wait = [this](EndContinuation continuation) {
        auto owned = std::make_unique<EndContinuation>(std::move(continuation));
        g_subprocess_wait_async(process.get(), nullptr, onEnd, owned.release());
    };
    co_return co_await withCheckedContinuation<bool>(std::move(wait));
}

void HelperProcess::readable() {
    if (!read()) {
        watch.reset();
        closed_.cancel();
    }
    deliver();
}

/// False if nothing more can come.
bool HelperProcess::read() {
    std::array<char, 4096> buffer;
    const ssize_t count = ::read(socket.get(), buffer.data(), buffer.size());
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return true;
    if (count <= 0)
        return false;
    reader.feed(std::span(buffer.data(), static_cast<std::size_t>(count)));
    return !reader.broken();
}

void HelperProcess::deliver() {
    if (!waiting)
        return;
    std::optional<Message> message = reader.next();
    if (message || closed_.cancelled() || reader.broken())
        std::exchange(waiting, std::nullopt)->resume(std::move(message));
}

} // namespace kelo::authorization
