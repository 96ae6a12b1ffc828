#pragma once

#include "authenticator/keys/KeyStore.h"
#include "authenticator/keys/WrappingKeySource.h"
#include "base/async/Worker.h"

#include <memory>

namespace kelo::authenticator {

/// Keys for a machine without a security chip: made and used in this process's memory, for the
/// moment it takes, and kept encrypted under a wrapping key that lives elsewhere.
class SoftwareKeyStore final : public KeyStore {
public:
    /// The worker must outlive the store; the source is touched only on it.
    SoftwareKeyStore(std::shared_ptr<WrappingKeySource> source, Worker& worker);

    Task<CreatedKey> create() override;
    Task<Bytes> sign(Bytes wrappedPrivateKey, Bytes digest) override;

private:
    std::shared_ptr<WrappingKeySource> source;
    Worker& worker;
};

} // namespace kelo::authenticator
