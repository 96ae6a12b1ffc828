#include "demo/tls/CertificateMaker.h"

#include "demo/base/ServiceError.h"

#include <openssl/bn.h>
#include <openssl/pem.h>

#include <ctime>
#include <initializer_list>
#include <utility>

namespace kelo::demo {
namespace {

using namespace std::chrono_literals;

constexpr auto day = 24h;
constexpr auto authorityLife = 3652 * day;
/// Longer-lived server certificates are refused by some TLS stacks.
constexpr auto serverLife = 397 * day;
/// Clocks that are set back a little must not find a certificate from the future.
constexpr auto clockAllowance = 1 * day;

void demand(bool done) {
    if (!done)
        throw ServiceError("Could not make the certificates: OpenSSL refused a step.");
}

KeyPointer makeKey() {
    KeyPointer key(EVP_EC_gen("P-256"));
    demand(key != nullptr);
    return key;
}

void setRandomSerial(X509& certificate) {
    const NumberPointer number(BN_new());
    // 127 bits: positive, and far below the 20 bytes that a serial number may have.
    demand(number && BN_rand(number.get(), 127, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY) == 1 &&
           BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(&certificate)) != nullptr);
}

void setLife(X509& certificate, std::chrono::seconds life) {
    const std::chrono::seconds allowance = clockAllowance;
    demand(X509_gmtime_adj(X509_getm_notBefore(&certificate), -allowance.count()) != nullptr &&
           X509_gmtime_adj(X509_getm_notAfter(&certificate), life.count()) != nullptr);
}

void setSubject(X509& certificate, const char* commonName) {
    X509_NAME* name = X509_get_subject_name(&certificate);
    const auto add = [name](const char* field, const char* text) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(text);
        demand(X509_NAME_add_entry_by_txt(name, field, MBSTRING_UTF8, bytes, -1, -1, 0) == 1);
    };
    add("O", "Kelo demo service");
    add("CN", commonName);
}

using Extension = std::pair<int, const char*>;

void addExtensions(X509& certificate, X509& issuer, std::initializer_list<Extension> extensions) {
    X509V3_CTX context{};
    X509V3_set_ctx(&context, &issuer, &certificate, nullptr, nullptr, 0);
    for (const auto& [identifier, value] : extensions) {
        const ExtensionPointer extension(X509V3_EXT_conf_nid(nullptr, &context, identifier, value));
        demand(extension && X509_add_ext(&certificate, extension.get(), -1) == 1);
    }
}

CertificatePointer newCertificate(EVP_PKEY& key, const char* commonName,
                                  std::chrono::seconds life) {
    CertificatePointer certificate(X509_new());
    demand(certificate && X509_set_version(certificate.get(), X509_VERSION_3) == 1 &&
           X509_set_pubkey(certificate.get(), &key) == 1);
    setRandomSerial(*certificate);
    setLife(*certificate, life);
    setSubject(*certificate, commonName);
    return certificate;
}

template <typename Write>
std::string toPem(Write write) {
    // Secure memory: a private key goes through here.
    const BioPointer memory(BIO_new(BIO_s_secmem()));
    demand(memory && write(memory.get()) == 1);
    char* text = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &text);
    demand(size > 0);
    return std::string(text, static_cast<std::size_t>(size));
}

} // namespace

Identity makeAuthority() {
    Identity authority;
    authority.key = makeKey();
    authority.certificate = newCertificate(*authority.key, "Kelo demo authority", authorityLife);
    X509& certificate = *authority.certificate;
    demand(X509_set_issuer_name(&certificate, X509_get_subject_name(&certificate)) == 1);
    addExtensions(certificate, certificate,
                  {{NID_basic_constraints, "critical,CA:TRUE,pathlen:0"},
                   {NID_key_usage, "critical,keyCertSign,cRLSign"},
                   {NID_subject_key_identifier, "hash"},
                   {NID_name_constraints,
                    "critical,permitted;DNS:localhost,permitted;IP:127.0.0.1/255.255.255.255,"
                    "permitted;IP:0:0:0:0:0:0:0:1/ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"}});
    demand(X509_sign(&certificate, authority.key.get(), EVP_sha256()) > 0);
    return authority;
}

Identity makeServerIdentity(const Identity& authority) {
    Identity server;
    server.key = makeKey();
    server.certificate = newCertificate(*server.key, "localhost", serverLife);
    X509& certificate = *server.certificate;
    X509& issuer = *authority.certificate;
    const ASN1_TIME* end = X509_get0_notAfter(&issuer);
    if (ASN1_TIME_compare(X509_get0_notAfter(&certificate), end) > 0)
        demand(X509_set1_notAfter(&certificate, end) == 1);
    demand(X509_set_issuer_name(&certificate, X509_get_subject_name(&issuer)) == 1);
    addExtensions(certificate, issuer,
                  {{NID_basic_constraints, "critical,CA:FALSE"},
                   {NID_key_usage, "critical,digitalSignature"},
                   {NID_ext_key_usage, "serverAuth"},
                   {NID_subject_key_identifier, "hash"},
                   {NID_authority_key_identifier, "keyid:always"},
                   {NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,IP:::1"}});
    demand(X509_sign(&certificate, authority.key.get(), EVP_sha256()) > 0);
    return server;
}

std::string certificateToPem(X509& certificate) {
    return toPem([&](BIO* out) { return PEM_write_bio_X509(out, &certificate); });
}

std::string keyToPem(EVP_PKEY& key) {
    return toPem([&](BIO* out) {
        return PEM_write_bio_PKCS8PrivateKey(out, &key, nullptr, nullptr, 0, nullptr, nullptr);
    });
}

CertificatePointer certificateFromPem(std::string_view pem) {
    const BioPointer in(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    return CertificatePointer(in ? PEM_read_bio_X509(in.get(), nullptr, nullptr, nullptr)
                                 : nullptr);
}

KeyPointer keyFromPem(std::string_view pem) {
    const BioPointer in(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    // An empty pass phrase instead of OpenSSL's prompt on the terminal.
    char none[] = "";
    return KeyPointer(in ? PEM_read_bio_PrivateKey(in.get(), nullptr, nullptr, none) : nullptr);
}

bool staysValidFor(const X509& certificate, std::chrono::hours span) {
    std::time_t now = std::time(nullptr);
    std::time_t then = now + std::chrono::seconds(span).count();
    return X509_cmp_time(X509_get0_notBefore(&certificate), &now) < 0 &&
           X509_cmp_time(X509_get0_notAfter(&certificate), &then) > 0;
}

} // namespace kelo::demo
