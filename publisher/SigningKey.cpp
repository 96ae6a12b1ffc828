#include "publisher/SigningKey.h"

#include "publisher/Failure.h"
#include "publisher/Files.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <sys/stat.h>

#include <string_view>

namespace kelo::publisher {

namespace {

struct BioDeleter {
    void operator()(BIO* memory) const { BIO_free_all(memory); }
};
using BioPointer = std::unique_ptr<BIO, BioDeleter>;

struct ContextDeleter {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

void require(bool worked) {
    if (!worked)
        throw Failure("The cryptography library failed. Try again.");
}

void checkPermissions(const std::filesystem::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        throw Failure("There is no key \"" + path.string() +
                      "\". Make one with kelo-appcast keygen, or name the one you have.");
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        throw Failure("Others can read the key \"" + path.string() +
                      "\". Run chmod 600 on it, and make a new key if somebody may have read it.");
}

// Without this, a key with a password would make OpenSSL ask for it and stop a script.
int noPassword(char*, int, int, void*) {
    return 0;
}

} // namespace

void SigningKey::Deleter::operator()(EVP_PKEY* key) const {
    EVP_PKEY_free(key);
}

SigningKey SigningKey::generate() {
    SigningKey made(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"));
    require(made.key != nullptr);
    return made;
}

SigningKey SigningKey::load(const std::filesystem::path& path) {
    checkPermissions(path);
    const MappedFile file(path);
    // BIO_new_mem_buf() returns null for an empty file.
    const BioPointer memory(
        BIO_new_mem_buf(file.bytes().data(), static_cast<int>(file.bytes().size())));
    SigningKey loaded(memory ? PEM_read_bio_PrivateKey(memory.get(), nullptr, noPassword, nullptr)
                             : nullptr);
    if (!loaded.key || EVP_PKEY_get_id(loaded.key.get()) != EVP_PKEY_ED25519)
        throw Failure("\"" + path.string() +
                      "\" is not a signing key. Name the file that kelo-appcast keygen made.");
    return loaded;
}

void SigningKey::save(const std::filesystem::path& path) const {
    // Secure memory is wiped when it is freed.
    const BioPointer memory(BIO_new(BIO_s_secmem()));
    require(memory && PEM_write_bio_PrivateKey(memory.get(), key.get(), nullptr, nullptr, 0,
                                               nullptr, nullptr) == 1);
    char* text = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &text);
    writeNewSecretFile(path, {text, static_cast<std::size_t>(length)});
}

updater::PublicKey SigningKey::publicKey() const {
    updater::PublicKey bytes{};
    std::size_t length = bytes.size();
    require(EVP_PKEY_get_raw_public_key(key.get(), bytes.data(), &length) == 1 &&
            length == bytes.size());
    return bytes;
}

updater::Signature SigningKey::sign(ByteView bytes) const {
    updater::Signature signature{};
    std::size_t length = signature.size();
    const std::unique_ptr<EVP_MD_CTX, ContextDeleter> context(EVP_MD_CTX_new());
    require(context &&
            EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1);
    require(EVP_DigestSign(context.get(), signature.data(), &length, bytes.data(), bytes.size()) ==
                1 &&
            length == signature.size());
    return signature;
}

} // namespace kelo::publisher
