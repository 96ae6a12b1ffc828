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

/// Creates each file that is missing, has the wrong key or expires within 30 days; leaves the
/// others. A valid authority is never replaced, because programs have it compiled in. Several
/// processes may call this at once. Throws ServiceError, also if the authority is valid but its key
/// is missing and a new server certificate is due.
void prepareAuthority(const AuthorityFiles& files);

/// The same for the server certificate alone. Without an authority, throws and says how to create
/// one, because no program would trust a new one.
void prepareServerCertificate(const AuthorityFiles& files);

} // namespace kelo::demo
