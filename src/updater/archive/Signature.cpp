#include "updater/archive/Signature.h"

#include "base/Base64.h"
#include "base/Text.h"

#include <openssl/evp.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace kelo::updater {

namespace {

struct OpenSslDeleter {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

template <std::size_t Size>
std::optional<std::array<std::uint8_t, Size>> exactly(std::string_view base64) {
    const auto bytes = base64Decode(trimmed(base64));
    if (!bytes || bytes->size() != Size)
        return std::nullopt;
    std::array<std::uint8_t, Size> result{};
    std::copy(bytes->begin(), bytes->end(), result.begin());
    return result;
}

// Fills the bytes from the file; false unless the file has exactly that size.
bool readWhole(int descriptor, Bytes& bytes) {
    std::size_t done = 0;
    while (true) {
        std::uint8_t extra = 0;
        const bool full = done == bytes.size();
        const ssize_t count = full ? pread(descriptor, &extra, 1, static_cast<off_t>(done))
                                   : pread(descriptor, bytes.data() + done, bytes.size() - done,
                                           static_cast<off_t>(done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0 || full)
            return count == 0 && full;
        done += static_cast<std::size_t>(count);
    }
}

} // namespace

std::optional<PublicKey> parsePublicKey(std::string_view base64) {
    return exactly<std::tuple_size_v<PublicKey>>(base64);
}

std::optional<Signature> parseSignature(std::string_view base64) {
    return exactly<std::tuple_size_v<Signature>>(base64);
}

bool verifies(const PublicKey& key, const Signature& signature, ByteView bytes) {
    const std::unique_ptr<EVP_PKEY, OpenSslDeleter> publicKey(
        EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, key.data(), key.size()));
    const std::unique_ptr<EVP_MD_CTX, OpenSslDeleter> context(EVP_MD_CTX_new());
    return publicKey && context &&
           EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, publicKey.get()) == 1 &&
           EVP_DigestVerify(context.get(), signature.data(), signature.size(), bytes.data(),
                            bytes.size()) == 1;
}

bool verifiesFile(const PublicKey& key, const Signature& signature, int descriptor,
                  std::uint64_t size) {
    // The algorithm needs all bytes at once. They are read rather than mapped, because reading a
    // mapped file that somebody shortens would end the process.
    Bytes bytes(size);
    return readWhole(descriptor, bytes) && verifies(key, signature, bytes);
}

} // namespace kelo::updater
