#include "linux/tpm/TpmConnection.h"

#include "linux/tpm/TpmResult.h"

#include <tss2/tss2_tctildr.h>
#include <unistd.h>

#include <string_view>

namespace kelo::tpm {

namespace {

constexpr std::string_view devicePrefix = "device:";

/// The library says the same of a device that is missing and of one that may not be opened.
void requireDevice(const std::string& transport) {
    if (!transport.starts_with(devicePrefix))
        return;
    const std::string device = transport.substr(devicePrefix.size());
    if (::access(device.c_str(), F_OK) != 0)
        throw tpmFailure(TpmTrouble::missing, "there is no " + device);
    if (::access(device.c_str(), R_OK | W_OK) != 0)
        throw tpmFailure(TpmTrouble::notPermitted, "no permission for " + device);
}

} // namespace

void TpmConnection::TransportDeleter::operator()(TSS2_TCTI_CONTEXT* transport) const {
    Tss2_TctiLdr_Finalize(&transport);
}

TpmConnection::TpmConnection(const std::string& name) {
    requireDevice(name);
    TSS2_TCTI_CONTEXT* opened = nullptr;
    require(Tss2_TctiLdr_Initialize(name.c_str(), &opened), "opening the chip");
    transport.reset(opened);
    ESYS_CONTEXT* made = nullptr;
    require(Esys_Initialize(&made, opened, nullptr), "preparing the chip");
    context.reset(made);
}

TpmHandle::~TpmHandle() {
    // The resource manager flushes what is left when the connection is closed.
    Esys_FlushContext(connection.get(), handle);
}

} // namespace kelo::tpm
