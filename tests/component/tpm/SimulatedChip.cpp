#include "component/tpm/SimulatedChip.h"

#include "linux/tpm/TpmConnection.h"
#include "linux/tpm/TpmResult.h"
#include "posix/FileDescriptor.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace kelo::tests {

namespace {

/// Listens before the chip runs, so that nobody has to wait until it does.
int listenAt(const std::string& path) {
    posix::FileDescriptor made(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    ::unlink(path.c_str());
    const auto* const place = reinterpret_cast<const sockaddr*>(&address);
    if (!made || ::bind(made.get(), place, sizeof address) != 0 || ::listen(made.get(), 8) != 0)
        throw std::runtime_error("no socket at " + path + ": " + std::strerror(errno));
    return made.release();
}

/// As a command of its own: the library flushes only what it has made itself.
void flush(const tpm::TpmConnection& connection, TPM2_HANDLE handle) {
    TSS2_TCTI_CONTEXT* transport = nullptr;
    tpm::require(Esys_GetTcti(connection.get(), &transport), "asking for the transport");
    std::array<std::uint8_t, 14> command{0x80, 0x01, 0, 0, 0, 14, 0x00, 0x00, 0x01, 0x65};
    for (std::size_t byte = 0; byte < 4; ++byte)
        command[10 + byte] = static_cast<std::uint8_t>(handle >> (24 - 8 * byte));
    tpm::require(Tss2_Tcti_Transmit(transport, command.size(), command.data()), "flushing");
    std::array<std::uint8_t, 10> response{};
    std::size_t size = response.size();
    tpm::require(Tss2_Tcti_Receive(transport, &size, response.data(), TSS2_TCTI_TIMEOUT_BLOCK),
                 "flushing");
}

} // namespace

SimulatedChip::~SimulatedChip() {
    cutPower();
}

void SimulatedChip::powerOn() {
    // A real chip is a device, and a device that is gone sends no signal.
    std::signal(SIGPIPE, SIG_IGN);
    constexpr int commands = 3;
    constexpr int control = 4;
    const auto launcher = gobject::GObjectPointer<GSubprocessLauncher>::adopt(
        g_subprocess_launcher_new(static_cast<GSubprocessFlags>(
            G_SUBPROCESS_FLAGS_STDOUT_SILENCE | G_SUBPROCESS_FLAGS_STDERR_SILENCE)));
    g_subprocess_launcher_take_fd(launcher.get(), listenAt(socket()), commands);
    g_subprocess_launcher_take_fd(launcher.get(), listenAt(socket() + ".ctrl"), control);
    const std::string state = "dir=" + folder.path().string();
    GError* error = nullptr;
    process = gobject::GObjectPointer<GSubprocess>::adopt(g_subprocess_launcher_spawn(
        launcher.get(), &error, "swtpm", "socket", "--tpm2", "--tpmstate", state.c_str(),
        "--server", "type=unixio,fd=3", "--ctrl", "type=unixio,fd=4", "--flags",
        "not-need-init,startup-clear", nullptr));
    const gobject::GErrorPointer failure(error);
    if (failure)
        throw std::runtime_error(failure->message);
}

void SimulatedChip::clear() const {
    const tpm::TpmConnection connection(transport());
    tpm::require(Esys_Clear(connection.get(), ESYS_TR_RH_LOCKOUT, ESYS_TR_PASSWORD, ESYS_TR_NONE,
                            ESYS_TR_NONE),
                 "clearing");
}

void SimulatedChip::forgetLeftovers() const {
    const tpm::TpmConnection connection(transport());
    for (const TPM2_HANDLE first :
         {TPM2_TRANSIENT_FIRST, TPM2_HMAC_SESSION_FIRST, TPM2_LOADED_SESSION_FIRST}) {
        TPMS_CAPABILITY_DATA* told = nullptr;
        tpm::require(Esys_GetCapability(connection.get(), ESYS_TR_NONE, ESYS_TR_NONE, ESYS_TR_NONE,
                                        TPM2_CAP_HANDLES, first, 32, nullptr, &told),
                     "asking for handles");
        const tpm::TpmMemory<TPMS_CAPABILITY_DATA> memory(told);
        for (UINT32 number = 0; number < told->data.handles.count; ++number)
            flush(connection, told->data.handles.handle[number]);
    }
}

void SimulatedChip::cutPower() {
    if (!process)
        return;
    g_subprocess_force_exit(process.get());
    g_subprocess_wait(process.get(), nullptr, nullptr);
    process = {};
}

} // namespace kelo::tests
