#pragma once

#include "authenticator/keys/KeyStore.h"
#include "base/Bytes.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::authenticator {

class Database;

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
    /// The store that made the key, and which alone can use it.
    KeyKeeper keeper = KeyKeeper::software;
    /// How often the service has refused it since it last accepted it. save() does not read this.
    std::int64_t refusals = 0;
    /// Whether the service has ever accepted it. save() does not read this.
    bool accepted = false;
    /// When it last signed; nothing if never, or not since this is noted. save() does not read
    /// this.
    std::optional<std::chrono::sys_seconds> lastUsed;

    friend bool operator==(const CredentialRecord&, const CredentialRecord&) = default;
};

/// The passkeys of this user, in one SQLite file that no other user can read.
///
/// Each call opens the file; the constructor does not. A file that is damaged, belongs to another
/// program or was written by a newer Kelo is reported and not changed. So is a symbolic link, which
/// could redirect a write to any other file. A write is atomic, even if the process is killed or
/// the computer loses power. The first write to a file of an earlier version leaves a copy of it
/// beside it (".former"), which goes when the service has accepted a passkey. Calls block and may
/// come from any thread. Several processes may use the file at the same time. Throws a Failure of
/// kind storage.
class CredentialStore {
public:
    /// The first save() creates the file and missing folders above it.
    explicit CredentialStore(std::filesystem::path file);

    /// Stores a new passkey beside those that the account already has, because the service may
    /// still refuse it. An account has at most one passkey that the service has accepted, and four
    /// others. If there are more, the oldest of the others go, refused ones first.
    void save(const CredentialRecord& record) const;

    /// Notes that the service has accepted a passkey: it stays until the service accepts a newer
    /// one of the same account. The older ones of that account are removed. Does nothing if the
    /// store does not hold this passkey.
    void noteAccepted(std::string_view relyingPartyIdentifier, ByteView credentialId) const;

    /// Notes that the service has refused a passkey. Removes nothing, because a refusal can be an
    /// error of the service. Does nothing if the store does not hold this passkey.
    void noteRefused(std::string_view relyingPartyIdentifier, ByteView credentialId) const;

    /// Notes when a passkey has signed. Does nothing if the store does not hold it.
    void noteUsed(std::string_view relyingPartyIdentifier, ByteView credentialId,
                  std::chrono::sys_seconds when) const;

    /// The passkeys of a relying party, the last saved first.
    std::vector<CredentialRecord> find(std::string_view relyingPartyIdentifier) const;

    /// All passkeys, of every relying party, the last saved first.
    std::vector<CredentialRecord> all() const;

    /// Removes a passkey, and the copy of a file of an earlier version, which may hold it as well.
    /// Its private key is nowhere outside of the record, so it is gone. Does nothing to the
    /// passkeys if the store does not hold it.
    void remove(ByteView credentialId) const;

private:
    /// Of every relying party if none is named.
    std::vector<CredentialRecord>
    select(std::optional<std::string_view> relyingPartyIdentifier) const;
    /// Does the work in one transaction. Not if there is no file yet.
    void change(const std::function<void(const Database&)>& work) const;

    std::filesystem::path file;
};

} // namespace kelo::authenticator
