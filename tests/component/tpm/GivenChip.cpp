// Loaded into a program, has it find the chip that KELO_GIVEN_CHIP names, as the library's loader
// names it, where it looks for the chip of this computer. KELO_KILLED_AT_EXCHANGE is the number of
// the message to or from the chip, counted from 0, at which the program is killed.
#include <dlfcn.h>
#include <tss2/tss2_tctildr.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string_view>

namespace {

constexpr std::string_view device = "/dev/tpmrm0";
constexpr std::string_view transport = "device:/dev/tpmrm0";

template <typename Function>
Function original(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

TSS2_TCTI_TRANSMIT_FCN realTransmit = nullptr;
TSS2_TCTI_RECEIVE_FCN realReceive = nullptr;

void countMessage() {
    static const char* const wanted = std::getenv("KELO_KILLED_AT_EXCHANGE");
    static long left = wanted ? std::strtol(wanted, nullptr, 10) : -1;
    if (left-- == 0)
        ::raise(SIGKILL);
}

TSS2_RC transmit(TSS2_TCTI_CONTEXT* context, size_t size, const uint8_t* message) {
    countMessage();
    return realTransmit(context, size, message);
}

TSS2_RC receive(TSS2_TCTI_CONTEXT* context, size_t* size, uint8_t* message, int32_t timeout) {
    countMessage();
    return realReceive(context, size, message, timeout);
}

/// What the program that can reach a chip starts has no use for the library, and in a sandbox it
/// cannot be found. The command in front of it hands it on.
struct NotHandedOn {
    NotHandedOn() {
        if (original<void*>("Tss2_TctiLdr_Initialize"))
            ::unsetenv("LD_PRELOAD");
    }
};
const NotHandedOn notHandedOn;

} // namespace

extern "C" {

TSS2_RC Tss2_TctiLdr_Initialize(const char* name, TSS2_TCTI_CONTEXT** context) {
    static const auto open =
        original<decltype(&Tss2_TctiLdr_Initialize)>("Tss2_TctiLdr_Initialize");
    const char* const given = std::getenv("KELO_GIVEN_CHIP");
    const TSS2_RC code = open(given && name == transport ? given : name, context);
    if (code == TSS2_RC_SUCCESS) {
        realTransmit = TSS2_TCTI_TRANSMIT(*context);
        realReceive = TSS2_TCTI_RECEIVE(*context);
        TSS2_TCTI_TRANSMIT(*context) = transmit;
        TSS2_TCTI_RECEIVE(*context) = receive;
    }
    return code;
}

int access(const char* path, int mode) noexcept {
    static const auto ask = original<decltype(&access)>("access");
    return path == device ? 0 : ask(path, mode);
}

} // extern "C"
