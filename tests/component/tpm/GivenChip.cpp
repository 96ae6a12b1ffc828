// Loaded into a program, has it find the chip that KELO_GIVEN_CHIP names, as the library's loader
// names it, where it looks for the chip of this computer.
#include <dlfcn.h>
#include <tss2/tss2_tctildr.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace {

constexpr std::string_view device = "/dev/tpmrm0";
constexpr std::string_view transport = "device:/dev/tpmrm0";

template <typename Function>
Function original(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

/// Programs that this one starts have no use for the library, and in a sandbox it cannot be found.
struct NotHandedOn {
    NotHandedOn() { ::unsetenv("LD_PRELOAD"); }
};
const NotHandedOn notHandedOn;

} // namespace

extern "C" {

TSS2_RC Tss2_TctiLdr_Initialize(const char* name, TSS2_TCTI_CONTEXT** context) {
    static const auto open =
        original<decltype(&Tss2_TctiLdr_Initialize)>("Tss2_TctiLdr_Initialize");
    const char* const given = std::getenv("KELO_GIVEN_CHIP");
    return open(given && name == transport ? given : name, context);
}

int access(const char* path, int mode) noexcept {
    static const auto ask = original<decltype(&access)>("access");
    return path == device ? 0 : ask(path, mode);
}

} // extern "C"
