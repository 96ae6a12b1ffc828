#include "authenticator/keys/Cryptography.h"

#include "base/Failure.h"
#include "base/Translation.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <string>

namespace kelo::authenticator {

Sha256Digest sha256(ByteView data) {
    Sha256Digest digest;
    if (EVP_Digest(data.data(), data.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1)
        cryptographyFailed("SHA-256");
    return digest;
}

Sha256Digest sha256(std::string_view text) {
    return sha256(bytesOf(text));
}

Bytes randomBytes(std::size_t count) {
    Bytes bytes(count);
    fillRandom(bytes.data(), count);
    return bytes;
}

void fillRandom(std::uint8_t* memory, std::size_t count) {
    if (RAND_bytes(memory, static_cast<int>(count)) != 1)
        cryptographyFailed("random bytes");
}

void cryptographyFailed(std::string_view operation) {
    throw Failure(
        FailureKind::cryptography,
        translated(
            "The cryptographic library of this computer failed. Restart Kelo and try again."),
        "OpenSSL failed at: " + std::string(operation));
}

} // namespace kelo::authenticator
