#pragma once

#include "base/Bytes.h"
#include "updater/archive/Signature.h"

#include <openssl/types.h>

#include <filesystem>
#include <memory>
#include <string>

namespace kelo::publisher {

/// The private key (Ed25519) that releases are signed with. Kept in a file in the form that every
/// tool for keys reads (PKCS #8, PEM), without a password: only its owner may read it.
class SigningKey {
public:
    /// A new one.
    static SigningKey generate();
    /// Throws Failure, also when others could read the file.
    static SigningKey load(const std::filesystem::path& path);
    /// Throws Failure when the file is there already.
    void save(const std::filesystem::path& path) const;

    updater::PublicKey publicKey() const;
    updater::Signature sign(ByteView bytes) const;

private:
    struct Deleter {
        void operator()(EVP_PKEY* key) const;
    };
    explicit SigningKey(EVP_PKEY* key) : key(key) {}

    std::unique_ptr<EVP_PKEY, Deleter> key;
};

} // namespace kelo::publisher
