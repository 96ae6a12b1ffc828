#include "demo/Options.h"
#include "demo/Service.h"
#include "demo/ServiceContext.h"
#include "demo/base/ServiceError.h"
#include "demo/http/HttpServer.h"
#include "demo/tls/Authority.h"
#include "posix/FileDescriptor.h"

#include <glib-unix.h>
#include <sys/signalfd.h>
#include <sys/stat.h>

#include <csignal>
#include <cstddef>
#include <iostream>
#include <memory>
#include <string>

namespace kelo::demo {
namespace {

struct LoopRelease {
    void operator()(GMainLoop* loop) const { g_main_loop_unref(loop); }
};

gboolean quit(int, GIOCondition, gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

/// Readable once the service is asked to end. No handler interrupts anything, and a request that
/// comes before the loop runs is kept. To be called before there is a second thread.
posix::FileDescriptor watchForEnd() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    posix::FileDescriptor watch(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!watch)
        throw ServiceError("Could not start: the system has no file descriptor to spare.");
    return watch;
}

std::string originAt(std::uint16_t port) {
    // A browser's origin leaves the default port out.
    return "https://localhost" + (port == 443 ? "" : ":" + std::to_string(port));
}

int serve(const Options& options) {
    const AuthorityFiles files(options.authority);
    prepareServerCertificate(files);
    const auto end = watchForEnd();
    HttpServer server(files, options.port);
    const auto origin = originAt(server.port());
    if (options.times)
        server.keepTimes(ExchangeTimes(*options.times));
    ServiceContext context(origin, options.origin.value_or(origin), StateFile(options.state));
    context.showsStranger = options.stranger;
    if (options.record)
        context.record = CeremonyRecord(*options.record);
    Service service(context);
    std::optional<Gallery> gallery;
    if (options.gallery)
        service.show(gallery.emplace(*options.gallery));
    server.setHandler([&service](const Request& request) { return service.answer(request); });

    const std::unique_ptr<GMainLoop, LoopRelease> loop(g_main_loop_new(nullptr, FALSE));
    g_unix_fd_add(end.get(), G_IO_IN, quit, loop.get());
    std::cout << "Listening on " << origin << std::endl;
    g_main_loop_run(loop.get());
    return 0;
}

int run(const Options& options) {
    switch (options.action) {
    case Options::Action::help:
        std::cout << helpText();
        return 0;
    case Options::Action::makeAuthority:
        prepareAuthority(AuthorityFiles(options.authority));
        return 0;
    case Options::Action::serve:
        return serve(options);
    }
    return 1;
}

} // namespace
} // namespace kelo::demo

int main(int count, char** arguments) {
    using namespace kelo::demo;
    ::umask(077);
    try {
        const auto given = static_cast<std::size_t>(count > 0 ? count - 1 : 0);
        return run(parseOptions({arguments + 1, given}));
    } catch (const UsageError& error) {
        std::cerr << "kelo-demo-service: " << error.what() << "\n\n" << helpText();
        return 2;
    } catch (const ServiceError& error) {
        std::cerr << "kelo-demo-service: " << error.what() << "\n";
        return 1;
    }
}
