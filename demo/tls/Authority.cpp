#include "demo/tls/Authority.h"

#include "base/SecretText.h"
#include "demo/base/AtomicFile.h"
#include "demo/base/ServiceError.h"
#include "demo/tls/CertificateMaker.h"
#include "posix/FileDescriptor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <string>

namespace kelo::demo {
namespace {

constexpr std::chrono::hours renewalMargin{30 * 24};
constexpr mode_t forOwner = 0600;
constexpr mode_t forEveryone = 0644;

KeyPointer readKey(const std::filesystem::path& path) {
    auto pem = readFileIfPresent(path);
    if (!pem)
        return nullptr;
    auto key = keyFromPem(*pem);
    wipe(*pem);
    return key;
}

CertificatePointer readCertificate(const std::filesystem::path& path) {
    const auto pem = readFileIfPresent(path);
    return pem ? certificateFromPem(*pem) : nullptr;
}

/// The key before the certificate: a certificate on disk then always finds its key, and a run that
/// is interrupted between the two leaves a pair that does not match, which the next run replaces.
void write(const Identity& identity, const std::filesystem::path& certificate,
           const std::filesystem::path& key) {
    auto pem = keyToPem(*identity.key);
    writeFileAtomically(key, pem, forOwner);
    wipe(pem);
    writeFileAtomically(certificate, certificateToPem(*identity.certificate), forEveryone);
}

bool isUsable(const Identity& identity) {
    return identity.certificate && identity.key &&
           X509_check_private_key(identity.certificate.get(), identity.key.get()) == 1 &&
           staysValidFor(*identity.certificate, renewalMargin);
}

bool isSignedBy(X509& authority, X509& certificate) {
    const KeyPointer key(X509_get_pubkey(&authority));
    return X509_check_issued(&authority, &certificate) == X509_V_OK && key &&
           X509_verify(&certificate, key.get()) == 1;
}

/// Shuts out other processes for its lifetime.
posix::FileDescriptor lockDirectory(const std::filesystem::path& directory) {
    posix::FileDescriptor lock(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    int result = -1;
    do
        result = lock ? ::flock(lock.get(), LOCK_EX) : -1;
    while (result != 0 && lock && errno == EINTR);
    if (result != 0)
        throw ServiceError("Could not open the directory " + directory.string() + ".");
    return lock;
}

void makeDirectory(const std::filesystem::path& directory) {
    std::error_code error;
    if (directory.has_parent_path())
        std::filesystem::create_directories(directory.parent_path(), error);
    if (::mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST)
        throw ServiceError("Could not make the directory " + directory.string() +
                           ". Give --authority a place you may write to.");
}

/// Files that were copied or unpacked may have lost their permissions.
void closeToOthers(const std::filesystem::path& path, mode_t mode) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0 && (status.st_mode & 077) != 0)
        ::chmod(path.c_str(), mode);
}

void prepareServer(const AuthorityFiles& files, X509& authority) {
    const Identity server{readCertificate(files.serverCertificate), readKey(files.serverKey)};
    if (isUsable(server) && isSignedBy(authority, *server.certificate))
        return;

    Identity signer{readCertificate(files.authorityCertificate), readKey(files.authorityKey)};
    if (!signer.key || X509_check_private_key(signer.certificate.get(), signer.key.get()) != 1)
        throw ServiceError("The server certificate must be renewed, but " +
                           files.authorityKey.string() +
                           " is missing or of another authority. Delete " +
                           files.directory.string() + " and make a new one with --init.");
    write(makeServerIdentity(signer), files.serverCertificate, files.serverKey);
}

void protect(const AuthorityFiles& files) {
    closeToOthers(files.directory, 0700);
    closeToOthers(files.authorityKey, forOwner);
    closeToOthers(files.serverKey, forOwner);
}

} // namespace

AuthorityFiles::AuthorityFiles(const std::filesystem::path& directory)
    : directory(directory),
      authorityCertificate(directory / "ca.pem"),
      authorityKey(directory / "ca-key.pem"),
      serverCertificate(directory / "server.pem"),
      serverKey(directory / "server-key.pem") {}

void prepareAuthority(const AuthorityFiles& files) {
    makeDirectory(files.directory);
    const auto lock = lockDirectory(files.directory);
    auto certificate = readCertificate(files.authorityCertificate);
    if (!certificate || !staysValidFor(*certificate, renewalMargin)) {
        const auto authority = makeAuthority();
        write(authority, files.authorityCertificate, files.authorityKey);
        certificate = readCertificate(files.authorityCertificate);
    }
    if (!certificate)
        throw ServiceError("Could not read back " + files.authorityCertificate.string() + ".");
    prepareServer(files, *certificate);
    protect(files);
}

void prepareServerCertificate(const AuthorityFiles& files) {
    const std::string remedy =
        "Make one with: kelo-demo-service --init --authority \"" + files.directory.string() + "\"";
    if (!std::filesystem::is_directory(files.directory))
        throw ServiceError("There is no certificate authority in " + files.directory.string() +
                           ". " + remedy);
    const auto lock = lockDirectory(files.directory);
    const auto certificate = readCertificate(files.authorityCertificate);
    if (!certificate)
        throw ServiceError("There is no certificate authority in " + files.directory.string() +
                           ". " + remedy);
    if (!staysValidFor(*certificate, std::chrono::hours(0)))
        throw ServiceError("The certificate authority in " + files.directory.string() +
                           " has expired. " + remedy);
    prepareServer(files, *certificate);
    protect(files);
}

} // namespace kelo::demo
