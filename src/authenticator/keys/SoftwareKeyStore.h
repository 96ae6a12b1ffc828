#pragma once

#include "authenticator/keys/KeyStore.h"
#include "authenticator/keys/SecretBytes.h"
#include "base/async/Worker.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <stop_token>

namespace kelo::authenticator {

inline constexpr std::size_t wrappingKeySize = 32;

/// Stores the wrapping key of the software key store. Both calls run on a worker, one at a time,
/// and block, possibly until the user has unlocked the storage. A stop ends them early with
/// requestCancelled(). Throws a Failure whose text tells the user what to do.
class WrappingKeySource {
public:
    virtual ~WrappingKeySource() = default;
    /// The key, of wrappingKeySize bytes. Nothing if none has ever been stored.
    virtual std::optional<SecretBytes> find(std::stop_token stop) = 0;
    /// The key. The first call creates a random key and stores it before it returns.
    virtual SecretBytes findOrCreate(std::stop_token stop) = 0;
};

/// A key store for computers without a security chip. It creates and uses keys in this process's
/// memory and never holds one longer than an operation takes. Outside memory a key exists only
/// encrypted with the wrapping key.
class SoftwareKeyStore final : public KeyStore {
public:
    /// The worker must outlive the store. The source is used on the worker only.
    SoftwareKeyStore(std::shared_ptr<WrappingKeySource> source, Worker& worker);

    Task<CreatedKey> create() override;
    Task<Bytes> sign(Bytes wrappedPrivateKey, Bytes digest) override;

private:
    std::shared_ptr<WrappingKeySource> source;
    Worker& worker;
};

} // namespace kelo::authenticator
