#include "DemoProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <stdexcept>

namespace kelo::demo {
namespace {

using gobject::GErrorPointer;
using gobject::GObjectPointer;
using gobject::GText;

GObjectPointer<GSubprocess> start(const std::vector<std::string>& arguments) {
    std::vector<const char*> line{DEMO_SERVICE};
    for (const auto& argument : arguments)
        line.push_back(argument.c_str());
    line.push_back(nullptr);
    const auto launcher = GObjectPointer<GSubprocessLauncher>::adopt(
        g_subprocess_launcher_new(static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                                G_SUBPROCESS_FLAGS_STDERR_PIPE)));
    // Read by sanitizer builds alone: with it on, the leak check itself crashes over the thread
    // storage that the TLS libraries allocate.
    g_subprocess_launcher_setenv(launcher.get(), "ASAN_OPTIONS", "intercept_tls_get_addr=0", FALSE);
    GError* error = nullptr;
    auto process = GObjectPointer<GSubprocess>::adopt(
        g_subprocess_launcher_spawnv(launcher.get(), line.data(), &error));
    const GErrorPointer owner(error);
    if (!process)
        throw std::runtime_error(error->message);
    return process;
}

std::string readToEnd(GInputStream* stream) {
    std::string text;
    char part[4096];
    for (;;) {
        const gssize count = g_input_stream_read(stream, part, sizeof part, nullptr, nullptr);
        if (count <= 0)
            return text;
        text.append(part, static_cast<std::size_t>(count));
    }
}

Outcome finish(GSubprocess* process, GInputStream* output) {
    Outcome outcome;
    outcome.output = readToEnd(output);
    outcome.errors = readToEnd(g_subprocess_get_stderr_pipe(process));
    g_subprocess_wait(process, nullptr, nullptr);
    if (g_subprocess_get_if_exited(process))
        outcome.exitCode = g_subprocess_get_exit_status(process);
    return outcome;
}

} // namespace

Outcome runDemoService(const std::vector<std::string>& arguments) {
    const auto process = start(arguments);
    return finish(process.get(), g_subprocess_get_stdout_pipe(process.get()));
}

DemoProcess::DemoProcess(const std::filesystem::path& authority,
                         const std::vector<std::string>& more) {
    std::vector<std::string> arguments{"--authority", authority.string(), "--port", "0"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    process = start(arguments);
    output = GObjectPointer<GDataInputStream>::adopt(
        g_data_input_stream_new(g_subprocess_get_stdout_pipe(process.get())));
    const GText line(g_data_input_stream_read_line(output.get(), nullptr, nullptr, nullptr));
    const std::string said = line ? line.get() : "";
    const std::string prefix = "Listening on ";
    if (!said.starts_with(prefix))
        throw std::runtime_error("the service did not start: " +
                                 finish(process.get(), G_INPUT_STREAM(output.get())).errors);
    origin_ = said.substr(prefix.size());
}

DemoProcess::~DemoProcess() {
    if (!process || !g_subprocess_get_identifier(process.get()))
        return;
    const auto outcome = stop(SIGTERM);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
}

std::string DemoProcess::identifier() const {
    return g_subprocess_get_identifier(process.get());
}

Outcome DemoProcess::stop(int signal) {
    g_subprocess_send_signal(process.get(), signal);
    return finish(process.get(), G_INPUT_STREAM(output.get()));
}

} // namespace kelo::demo
