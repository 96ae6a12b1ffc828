#include "demo/accounts/PasswordHash.h"

#include "demo/base/Random.h"
#include "demo/base/ServiceError.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <cstdint>

namespace kelo::demo {
namespace {

Bytes scrypt(std::string_view password, const Bytes& salt) {
    constexpr std::uint64_t cost = 16384;
    constexpr std::uint64_t blockSize = 8;
    constexpr std::uint64_t parallel = 1;
    constexpr std::uint64_t memoryLimit = 32 * 1024 * 1024;
    Bytes digest(32);
    if (EVP_PBE_scrypt(password.data(), password.size(), salt.data(), salt.size(), cost, blockSize,
                       parallel, memoryLimit, digest.data(), digest.size()) != 1)
        throw ServiceError("Could not check a password: the system is short of memory.");
    return digest;
}

} // namespace

PasswordHash::PasswordHash(std::string_view password)
    : salt(randomBytes(16)), digest(scrypt(password, salt)) {}

bool PasswordHash::matches(std::string_view password) const {
    const auto candidate = scrypt(password, salt);
    return CRYPTO_memcmp(candidate.data(), digest.data(), digest.size()) == 0;
}

} // namespace kelo::demo
