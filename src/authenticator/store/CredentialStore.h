#pragma once

#include "authenticator/keys/KeyStore.h"
#include "base/Bytes.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::authenticator {

/// A stored passkey.
struct CredentialRecord {
    Bytes credentialId;
    std::string relyingPartyIdentifier;
    /// The user handle: 1 to 64 bytes with which the service identifies the account.
    Bytes userId;
    /// The account name that the user sees.
    std::string accountName;
    std::chrono::sys_seconds created;
    webauthn::PublicKey publicKey;
    /// See KeyStore.
    Bytes wrappedPrivateKey;

    friend bool operator==(const CredentialRecord&, const CredentialRecord&) = default;
};

/// The passkeys of this user, in one SQLite file that no other user can read.
///
/// Each call opens the file; the constructor does not. A file that is damaged, belongs to another
/// program or was written by a newer Kelo is reported and not changed. So is a symbolic link, which
/// could redirect a write to any other file. A write is atomic, even if the process is killed or
/// the computer loses power. Calls block and may come from any thread. Several processes may use
/// the file at the same time. Throws a Failure of kind storage.
class CredentialStore {
public:
    /// The first save() creates the file and missing folders above it.
    explicit CredentialStore(std::filesystem::path file);

    /// Stores a passkey. Replaces the passkey of the same relying party and user.
    void save(const CredentialRecord& record) const;

    /// The passkeys of a relying party, newest first.
    std::vector<CredentialRecord> find(std::string_view relyingPartyIdentifier) const;

private:
    std::filesystem::path file;
};

} // namespace kelo::authenticator
