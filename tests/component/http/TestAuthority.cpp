#include "component/http/TestAuthority.h"

#include <gio/gio.h>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <stdexcept>

namespace kelo::test {

namespace {

struct Deleter {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(BIO* bio) const { BIO_free_all(bio); }
    void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
};
using Key = std::unique_ptr<EVP_PKEY, Deleter>;
using Certificate = std::unique_ptr<X509, Deleter>;
using Memory = std::unique_ptr<BIO, Deleter>;
using Extension = std::unique_ptr<X509_EXTENSION, Deleter>;

Key makeKey() {
    Key key(EVP_EC_gen("P-256"));
    if (!key)
        throw std::runtime_error("no key");
    return key;
}

void extend(X509* certificate, X509* issuer, int kind, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()));
    if (!extension || X509_add_ext(certificate, extension.get(), -1) != 1)
        throw std::runtime_error("no extension " + value);
}

Certificate blank(const std::string& name, EVP_PKEY* key, std::chrono::seconds from,
                  std::chrono::seconds until) {
    Certificate certificate(X509_new());
    X509_set_version(certificate.get(), 2);
    std::uint64_t serial = 0;
    RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial);
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate.get()), serial >> 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), from.count());
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), until.count());
    X509_set_pubkey(certificate.get(), key);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    return certificate;
}

Certificate leaf(const IdentityRequest& request, EVP_PKEY* key, X509* issuer) {
    Certificate certificate =
        blank(request.hosts.front(), key, request.validFrom, request.validUntil);
    X509* const signer = issuer ? issuer : certificate.get();
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(signer));
    std::string names;
    for (const std::string& host : request.hosts) {
        const char* const kind = g_hostname_is_ip_address(host.c_str()) ? "IP:" : "DNS:";
        names += (names.empty() ? "" : ",") + (kind + host);
    }
    extend(certificate.get(), signer, NID_basic_constraints, "critical,CA:FALSE");
    extend(certificate.get(), signer, NID_ext_key_usage,
           request.forServers ? "serverAuth" : "clientAuth");
    extend(certificate.get(), signer, NID_subject_alt_name, names);
    return certificate;
}

std::string text(BIO* memory) {
    char* data = nullptr;
    const long size = BIO_get_mem_data(memory, &data);
    return std::string(data, static_cast<std::size_t>(size));
}

std::string pemOf(X509* certificate) {
    const Memory memory(BIO_new(BIO_s_mem()));
    PEM_write_bio_X509(memory.get(), certificate);
    return text(memory.get());
}

std::string pemOf(EVP_PKEY* key) {
    const Memory memory(BIO_new(BIO_s_mem()));
    PEM_write_bio_PrivateKey(memory.get(), key, nullptr, nullptr, 0, nullptr, nullptr);
    return text(memory.get());
}

} // namespace

struct TestAuthority::Parts {
    Key key = makeKey();
    Certificate certificate;
};

TestAuthority::TestAuthority(const std::string& name) : parts(std::make_unique<Parts>()) {
    parts->certificate =
        blank(name, parts->key.get(), -std::chrono::hours(48), std::chrono::hours(48));
    X509* const root = parts->certificate.get();
    X509_set_issuer_name(root, X509_get_subject_name(root));
    extend(root, root, NID_basic_constraints, "critical,CA:TRUE");
    extend(root, root, NID_key_usage, "critical,keyCertSign,cRLSign");
    X509_sign(root, parts->key.get(), EVP_sha256());
}

TestAuthority::~TestAuthority() = default;

std::string TestAuthority::pem() const {
    return pemOf(parts->certificate.get());
}

Identity TestAuthority::issue(const IdentityRequest& request) const {
    const Key key = makeKey();
    const Certificate certificate = leaf(request, key.get(), parts->certificate.get());
    X509_sign(certificate.get(), parts->key.get(), EVP_sha256());
    return {pemOf(certificate.get()), pemOf(key.get())};
}

Identity TestAuthority::selfSigned(const IdentityRequest& request) {
    const Key key = makeKey();
    const Certificate certificate = leaf(request, key.get(), nullptr);
    X509_sign(certificate.get(), key.get(), EVP_sha256());
    return {pemOf(certificate.get()), pemOf(key.get())};
}

} // namespace kelo::test
