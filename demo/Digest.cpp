#include "demo/Digest.h"

#include <openssl/crypto.h>
#include <openssl/hmac.h>
#include <openssl/sha.h>

#include <span>

namespace kelo::demo {
namespace {

platform::ByteView view(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

} // namespace

platform::Bytes sha256(platform::ByteView bytes) {
    platform::Bytes digest(SHA256_DIGEST_LENGTH);
    SHA256(bytes.data(), bytes.size(), digest.data());
    return digest;
}

platform::Bytes sha256(std::string_view text) {
    return sha256(view(text));
}

platform::Bytes hmacSha256(platform::ByteView key, std::string_view message) {
    platform::Bytes digest(SHA256_DIGEST_LENGTH);
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
