#pragma once

#include "base/Bytes.h"
#include "updater/archive/Signature.h"

#include <openssl/types.h>

#include <filesystem>
#include <memory>
#include <string>

namespace kelo::publisher {

/// The private key (Ed25519) that signs releases. Its file is PEM (PKCS #8) without a password, so
/// only its owner may read it.
class SigningKey {
public:
    /// Makes a new key.
    static SigningKey generate();
    /// Throws Failure, also if others can read the file.
    static SigningKey load(const std::filesystem::path& path);
    /// Throws Failure, also if the file exists already.
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
