#pragma once

#include <filesystem>

namespace kelo::demo {

/// The files of a private certificate authority and of the one server certificate it signed.
struct AuthorityFiles {
    explicit AuthorityFiles(const std::filesystem::path& directory);

    std::filesystem::path directory;            ///< 0700
    std::filesystem::path authorityCertificate; ///< ca.pem, for clients to trust
    std::filesystem::path authorityKey;         ///< ca-key.pem, 0600
    std::filesystem::path serverCertificate;    ///< server.pem
    std::filesystem::path serverKey;            ///< server-key.pem, 0600
};

/// Makes what is missing, of the wrong key or within 30 days of its end; leaves the rest as it is.
/// The authority is kept as long as it is good: programs have it compiled in. Several processes may
/// call this at once. Throws ServiceError, also when the authority is good but its key is gone and
/// a new server certificate is due.
void prepareAuthority(const AuthorityFiles& files);

/// The same for the server certificate alone: an authority nobody trusts yet would help no one, so
/// without one this throws and says how to make it.
void prepareServerCertificate(const AuthorityFiles& files);

} // namespace kelo::demo
