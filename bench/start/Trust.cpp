#include "start/Trust.h"

#include "base/Base64.h"
#include "common/MomentFile.h"
#include "common/Results.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <sys/mount.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

constexpr const char* systemList = "/etc/ssl/certs/ca-certificates.crt";

// Outside of the desktop's own mount namespace the machine itself would trust the authority.
bool filesArePrivate() {
    return std::getenv("KELO_PRIVATE_DESKTOP_FOLDER") &&
           !std::getenv("KELO_PRIVATE_DESKTOP_PAM_SERVICES");
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
struct CertificateFree {
    void operator()(X509* certificate) const { X509_free(certificate); }
};

} // namespace

bool trustInPrivateDesktop(const fs::path& authority, const fs::path& folder) {
    const std::string known = fileText(systemList);
    if (!filesArePrivate() || known.empty())
        return false;
    const fs::path list = folder / "trusted.pem";
    writeText(list, known + "\n" + fileText(authority));
    return ::mount(list.c_str(), systemList, nullptr, MS_BIND, nullptr) == 0;
}

std::optional<std::string> publicKeyHash(const fs::path& path) {
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "re"));
    if (!file)
        return std::nullopt;
    const std::unique_ptr<X509, CertificateFree> certificate(
        PEM_read_X509(file.get(), nullptr, nullptr, nullptr));
    unsigned char* encoded = nullptr;
    const int length =
        certificate ? i2d_X509_PUBKEY(X509_get_X509_PUBKEY(certificate.get()), &encoded) : 0;
    if (length <= 0)
        return std::nullopt;
    Bytes hash(EVP_MAX_MD_SIZE);
    unsigned size = 0;
    EVP_Digest(encoded, static_cast<std::size_t>(length), hash.data(), &size, EVP_sha256(),
               nullptr);
    OPENSSL_free(encoded);
    hash.resize(size);
    return base64Encode(hash);
}

} // namespace kelo::bench
