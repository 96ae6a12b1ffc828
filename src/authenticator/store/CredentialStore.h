#pragma once

#include "authenticator/store/CredentialRecord.h"

#include <filesystem>
#include <string_view>
#include <vector>

namespace kelo::authenticator {

/// The passkeys of this user, in one SQLite file that only they can read.
///
/// The file is opened for each call and touched by none before. A file that is damaged, belongs to
/// another program, was written by a newer Kelo, or is a symbolic link (which could lead a write to
/// anywhere) is reported and left as it is. A change is there wholly or not at all, whatever kills
/// the process or the machine. Calls block and may come from any thread; other processes may use
/// the file at the same time. Throws a Failure of kind storage.
class CredentialStore {
public:
    /// Folders above the file that do not exist are made when the first passkey is kept.
    explicit CredentialStore(std::filesystem::path file);

    /// Keeps a passkey, in place of the one for the same relying party and user if there is one.
    void save(const CredentialRecord& record) const;

    /// The passkeys of a relying party, newest first.
    std::vector<CredentialRecord> find(std::string_view relyingPartyIdentifier) const;

private:
    std::filesystem::path file;
};

} // namespace kelo::authenticator
