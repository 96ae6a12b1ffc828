#pragma once

#include "updater/archive/Signature.h"

#include <openssl/evp.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kelo::test {

inline std::string encodeBase64(const unsigned char* data, std::size_t size) {
    std::string text((size + 2) / 3 * 4 + 1, '\0');
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), data,
                                       static_cast<int>(size));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

/// Signs archives with a key of its own.
class Publisher {
public:
    Publisher() : key(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519")) {
        if (!key)
            throw std::runtime_error("no key");
    }

    std::string publicKey() const {
        updater::PublicKey raw{};
        std::size_t size = raw.size();
        EVP_PKEY_get_raw_public_key(key.get(), raw.data(), &size);
        return encodeBase64(raw.data(), size);
    }

    std::string sign(std::string_view bytes) const {
        const std::unique_ptr<EVP_MD_CTX, Deleter> context(EVP_MD_CTX_new());
        updater::Signature signature{};
        std::size_t size = signature.size();
        EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, key.get());
        EVP_DigestSign(context.get(), signature.data(), &size,
                       reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
        return encodeBase64(signature.data(), size);
    }

private:
    struct Deleter {
        void operator()(EVP_PKEY* owned) const { EVP_PKEY_free(owned); }
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };
    std::unique_ptr<EVP_PKEY, Deleter> key;
};

} // namespace kelo::test
