#pragma once

#include <tss2/tss2_esys.h>

#include <memory>
#include <string>

namespace kelo::tpm {

struct EsysDeleter {
    void operator()(void* memory) const { Esys_Free(memory); }
};

/// Memory that the library has allocated for a response.
template <typename T>
using TpmMemory = std::unique_ptr<T, EsysDeleter>;

/// An open connection to the chip. Use it on one thread. Throws a Failure of kind storage.
class TpmConnection {
public:
    /// transport: as the library's loader names it, for instance "device:/dev/tpmrm0".
    explicit TpmConnection(const std::string& transport);

    ESYS_CONTEXT* get() const { return context.get(); }

private:
    struct TransportDeleter {
        void operator()(TSS2_TCTI_CONTEXT* transport) const;
    };
    struct ContextDeleter {
        void operator()(ESYS_CONTEXT* context) const { Esys_Finalize(&context); }
    };

    std::unique_ptr<TSS2_TCTI_CONTEXT, TransportDeleter> transport;
    std::unique_ptr<ESYS_CONTEXT, ContextDeleter> context;
};

/// An object or a session in the chip's memory, which has room for a few only. The destructor
/// flushes it. The connection must outlive this.
class TpmHandle {
public:
    TpmHandle(const TpmConnection& connection, ESYS_TR handle)
        : connection(connection), handle(handle) {}
    ~TpmHandle();
    TpmHandle(const TpmHandle&) = delete;
    TpmHandle& operator=(const TpmHandle&) = delete;

    ESYS_TR get() const { return handle; }

private:
    const TpmConnection& connection;
    ESYS_TR handle;
};

} // namespace kelo::tpm
