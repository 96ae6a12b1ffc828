#include "authenticator/keys/Cryptography.h"

#include "authenticator/keys/OpenSslPointer.h"
#include "base/Failure.h"
#include "base/Translation.h"

#include <openssl/ecdsa.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
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

SecretBytes derivedKey(const SecretBytes& key, std::string_view purpose) {
    SecretBytes derived(sizeof(Sha256Digest));
    const Bytes name = bytesOf(purpose);
    if (!HMAC(EVP_sha256(), key.view().data(), static_cast<int>(key.size()), name.data(),
              name.size(), derived.data(), nullptr))
        cryptographyFailed("deriving a key");
    return derived;
}

Bytes ecdsaSignature(ByteView r, ByteView s) {
    using Signature = OpenSslPointer<ECDSA_SIG, ECDSA_SIG_free>;
    using Number = OpenSslPointer<BIGNUM, BN_free>;
    const Signature signature(ECDSA_SIG_new());
    Number first(BN_bin2bn(r.data(), static_cast<int>(r.size()), nullptr));
    Number second(BN_bin2bn(s.data(), static_cast<int>(s.size()), nullptr));
    if (!signature || !first || !second ||
        ECDSA_SIG_set0(signature.get(), first.get(), second.get()) != 1)
        cryptographyFailed("reading a signature");
    static_cast<void>(first.release());
    static_cast<void>(second.release());
    const int size = i2d_ECDSA_SIG(signature.get(), nullptr);
    if (size <= 0)
        cryptographyFailed("writing a signature");
    Bytes der(static_cast<std::size_t>(size));
    unsigned char* at = der.data();
    i2d_ECDSA_SIG(signature.get(), &at);
    return der;
}

void cryptographyFailed(std::string_view operation) {
    throw Failure(
        FailureKind::cryptography,
        translated(
            "The cryptographic library of this computer failed. Restart Kelo and try again."),
        "OpenSSL failed at: " + std::string(operation));
}

} // namespace kelo::authenticator
