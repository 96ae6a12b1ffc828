#include "demo/base/Digest.h"

#include <openssl/crypto.h>
#include <openssl/hmac.h>
#include <openssl/sha.h>

#include <span>

namespace kelo::demo {
namespace {

ByteView view(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

} // namespace

Bytes sha256(ByteView bytes) {
    Bytes digest(SHA256_DIGEST_LENGTH);
    SHA256(bytes.data(), bytes.size(), digest.data());
    return digest;
}

Bytes sha256(std::string_view text) {
    return sha256(view(text));
}

Bytes hmacSha256(ByteView key, std::string_view message) {
    Bytes digest(SHA256_DIGEST_LENGTH);
    unsigned size = 0;
    HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), view(message).data(),
         message.size(), digest.data(), &size);
    return digest;
}

bool equalInConstantTime(std::string_view left, std::string_view right) {
    return left.size() == right.size() &&
           CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

} // namespace kelo::demo
