#include "authenticator/keys/KeyWrapping.h"

#include "authenticator/keys/Cryptography.h"
#include "authenticator/keys/OpenSslPointer.h"
#include "authenticator/keys/SoftwareKeyStore.h"
#include "base/Invariant.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace kelo::authenticator {

namespace {

// version | key check value | x | y | nonce | encrypted scalar | tag
constexpr std::uint8_t version = 1;
constexpr std::size_t checkValueSize = 8, coordinateSize = 32, nonceSize = 12, scalarSize = 32,
                      tagSize = 16;
constexpr std::size_t checkValueAt = 1;
constexpr std::size_t xAt = checkValueAt + checkValueSize;
constexpr std::size_t yAt = xAt + coordinateSize;
constexpr std::size_t nonceAt = yAt + coordinateSize;
constexpr std::size_t scalarAt = nonceAt + nonceSize;
constexpr std::size_t tagAt = scalarAt + scalarSize;
constexpr std::size_t wrappedSize = tagAt + tagSize;

using Cipher = OpenSslPointer<EVP_CIPHER_CTX, EVP_CIPHER_CTX_free>;

/// Identifies a wrapping key without revealing it. The label makes the digest useless for any other
/// purpose; it is part of the stored format and must never change.
std::array<std::uint8_t, checkValueSize> keyCheckValue(const SecretBytes& wrappingKey) {
    constexpr std::string_view label = "kelo wrapping key mark";
    SecretBytes input(label.size() + wrappingKey.size());
    const auto rest = std::copy(label.begin(), label.end(), input.data());
    std::copy(wrappingKey.view().begin(), wrappingKey.view().end(), rest);
    const Sha256Digest digest = sha256(input.view());
    std::array<std::uint8_t, checkValueSize> checkValue;
    std::copy_n(digest.begin(), checkValueSize, checkValue.begin());
    return checkValue;
}

void requireSize(const SecretBytes& wrappingKey) {
    if (wrappingKey.size() != wrappingKeySize)
        invariantBroken("a wrapping key has 32 bytes");
}

} // namespace

Bytes wrapPrivateKey(const SecretBytes& wrappingKey, const P256Key& key) {
    requireSize(wrappingKey);
    Bytes wrapped(wrappedSize);
    wrapped[0] = version;
    std::ranges::copy(keyCheckValue(wrappingKey), wrapped.begin() + checkValueAt);
    const webauthn::PublicKey publicKey = key.publicKey();
    std::ranges::copy(publicKey.x, wrapped.begin() + xAt);
    std::ranges::copy(publicKey.y, wrapped.begin() + yAt);
    fillRandom(wrapped.data() + nonceAt, nonceSize);

    const SecretBytes scalar = key.scalar();
    const Cipher cipher(EVP_CIPHER_CTX_new());
    int length = 0;
    if (!cipher ||
        EVP_EncryptInit_ex2(cipher.get(), EVP_aes_256_gcm(), wrappingKey.view().data(),
                            wrapped.data() + nonceAt, nullptr) != 1 ||
        EVP_EncryptUpdate(cipher.get(), nullptr, &length, wrapped.data(), nonceAt) != 1 ||
        EVP_EncryptUpdate(cipher.get(), wrapped.data() + scalarAt, &length, scalar.view().data(),
                          scalarSize) != 1 ||
        EVP_EncryptFinal_ex(cipher.get(), wrapped.data() + tagAt, &length) != 1 ||
        EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_AEAD_GET_TAG, tagSize, wrapped.data() + tagAt) !=
            1)
        cryptographyFailed("AES-GCM");
    return wrapped;
}

std::variant<P256Key, UnwrapFailure> unwrapPrivateKey(const SecretBytes& wrappingKey,
                                                      ByteView wrapped) {
    requireSize(wrappingKey);
    if (wrapped.size() != wrappedSize || wrapped[0] != version)
        return UnwrapFailure::damaged;
    if (!std::ranges::equal(keyCheckValue(wrappingKey),
                            wrapped.subspan(checkValueAt, checkValueSize)))
        return UnwrapFailure::otherWrappingKey;

    std::array<std::uint8_t, tagSize> tag;
    std::ranges::copy(wrapped.subspan(tagAt, tagSize), tag.begin());
    SecretBytes scalar(scalarSize);
    const Cipher cipher(EVP_CIPHER_CTX_new());
    int length = 0;
    if (!cipher ||
        EVP_DecryptInit_ex2(cipher.get(), EVP_aes_256_gcm(), wrappingKey.view().data(),
                            wrapped.data() + nonceAt, nullptr) != 1 ||
        EVP_DecryptUpdate(cipher.get(), nullptr, &length, wrapped.data(), nonceAt) != 1 ||
        EVP_DecryptUpdate(cipher.get(), scalar.data(), &length, wrapped.data() + scalarAt,
                          scalarSize) != 1 ||
        EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_AEAD_SET_TAG, tagSize, tag.data()) != 1)
        cryptographyFailed("AES-GCM");
    std::uint8_t none = 0;
    if (EVP_DecryptFinal_ex(cipher.get(), &none, &length) != 1)
        return UnwrapFailure::damaged;
    std::optional<P256Key> key = P256Key::fromScalar(scalar);
    if (!key)
        return UnwrapFailure::damaged;
    return std::move(*key);
}

} // namespace kelo::authenticator
