#include "linux/http/TrustedAuthority.h"

#include "deployment/Deployment.h"
#include "deployment/TrustedAuthority.h"

#include <gio/gunixoutputstream.h>
#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <sys/mman.h>

#include <algorithm>
#include <string>
#include <utility>

namespace kelo::http {

namespace {

// Certificates name an IPv6 address without the brackets that a URL puts around it.
std::string bareHost(const Url& url) {
    const std::string& host = url.host();
    return host.starts_with('[') && host.ends_with(']') ? host.substr(1, host.size() - 2) : host;
}

struct OpenSslDeleter {
    void operator()(BIO* memory) const { BIO_free_all(memory); }
    void operator()(X509* certificate) const { X509_free(certificate); }
};

// GIO accepts a purpose for the check, but its usual backend ignores it.
bool isForServers(GTlsCertificate* certificate) {
    char* text = nullptr;
    g_object_get(certificate, "certificate-pem", &text, nullptr);
    const gobject::GText pem(text);
    if (!pem)
        return false;
    const std::unique_ptr<BIO, OpenSslDeleter> memory(BIO_new_mem_buf(pem.get(), -1));
    const std::unique_ptr<X509, OpenSslDeleter> parsed(
        PEM_read_bio_X509(memory.get(), nullptr, nullptr, nullptr));
    return parsed && X509_check_purpose(parsed.get(), X509_PURPOSE_SSL_SERVER, /*ca=*/0) == 1;
}

} // namespace

// GIO reads authorities only from files, and reads the file again for every verification. Nobody
// else can replace a file in memory that only this process holds.
TrustedAuthority::TrustedAuthority(std::string_view pem, std::vector<std::string> hosts)
    : hosts(std::move(hosts)) {
    if (pem.empty())
        return;
    file = posix::FileDescriptor(memfd_create("kelo-authority", MFD_CLOEXEC));
    if (!file || !posix::writeAll(file.get(), pem)) {
        g_warning("The compiled-in certificate authority could not be laid out in memory; "
                  "only the system's are trusted.");
        return;
    }
    const std::string path = "/proc/self/fd/" + std::to_string(file.get());
    GError* error = nullptr;
    database =
        gobject::GObjectPointer<GTlsDatabase>::adopt(g_tls_file_database_new(path.c_str(), &error));
    if (const gobject::GErrorPointer failure(error); failure)
        g_warning("The compiled-in certificate authority could not be read (%s); "
                  "only the system's are trusted.",
                  failure->message);
}

TrustedAuthority::~TrustedAuthority() = default;

std::shared_ptr<const TrustedAuthority> TrustedAuthority::compiledIn() {
    static const auto authority = std::make_shared<const TrustedAuthority>(
        deployment::trustedAuthorityPem,
        std::vector{std::string(deployment::relyingPartyIdentifier)});
    return authority;
}

std::shared_ptr<const TrustedAuthority>
TrustedAuthority::compiledInFor(const std::string& anotherHost) {
    return std::make_shared<const TrustedAuthority>(
        deployment::trustedAuthorityPem,
        std::vector{std::string(deployment::relyingPartyIdentifier), anotherHost});
}

bool TrustedAuthority::vouchesFor(const Url& url) const {
    return database && std::any_of(hosts.begin(), hosts.end(), [&](const std::string& host) {
               return g_ascii_strcasecmp(host.c_str(), url.host().c_str()) == 0;
           });
}

GTlsCertificateFlags TrustedAuthority::problems(GTlsCertificate* certificate,
                                                const Url& url) const {
    if (!certificate || !vouchesFor(url))
        return G_TLS_CERTIFICATE_UNKNOWN_CA;
    const auto identity = gobject::GObjectPointer<GSocketConnectable>::adopt(
        g_network_address_new(bareHost(url).c_str(), url.port().value_or(443)));
    GError* error = nullptr;
    const GTlsCertificateFlags found = g_tls_database_verify_chain(
        database.get(), certificate, G_TLS_DATABASE_PURPOSE_AUTHENTICATE_SERVER, identity.get(),
        nullptr, G_TLS_DATABASE_VERIFY_NONE, nullptr, &error);
    if (const gobject::GErrorPointer failure(error); failure)
        return G_TLS_CERTIFICATE_GENERIC_ERROR;
    const bool sound = found != 0 || isForServers(certificate);
    return sound ? found : G_TLS_CERTIFICATE_GENERIC_ERROR;
}

} // namespace kelo::http
