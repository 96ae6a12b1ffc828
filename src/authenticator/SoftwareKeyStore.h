#pragma once

#include "authenticator/KeyStore.h"
#include "authenticator/WrappingKeySource.h"
#include "platform/Worker.h"

#include <memory>

namespace kelo::authenticator {

/// Keys for a machine without a security chip: made and used in this process's memory, for the
/// moment it takes, and kept encrypted under a wrapping key that lives elsewhere.
class SoftwareKeyStore final : public KeyStore {
public:
    /// The worker must outlive the store; the source is touched only on it.
    SoftwareKeyStore(std::shared_ptr<WrappingKeySource> source, platform::Worker& worker);

    platform::Task<CreatedKey> create() override;
    platform::Task<platform::Bytes> sign(platform::Bytes wrappedPrivateKey,
                                         platform::Bytes digest) override;

private:
    std::shared_ptr<WrappingKeySource> source;
    platform::Worker& worker;
};

} // namespace kelo::authenticator
