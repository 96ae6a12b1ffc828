#include "authenticator/store/CredentialStore.h"

#include "authenticator/store/CredentialSchema.h"
#include "authenticator/store/Database.h"
#include "authenticator/store/FormerFile.h"
#include "base/Failure.h"
#include "base/Translation.h"
#include "posix/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

namespace kelo::authenticator {

namespace {

/// The most passkeys of one account that the service has not accepted. More than one, because a
/// passkey whose reply was lost may be in use without our knowledge.
constexpr std::int64_t mostUnaccepted = 4;

std::string systemReason(const char* operation) {
    return std::string(operation) + ": " + std::strerror(errno);
}

[[noreturn]] void creationFailed(const char* operation) {
    storageFailed(errno == ENOSPC ? SQLITE_FULL : SQLITE_CANTOPEN, systemReason(operation));
}

/// Creates the folder if it is missing, and takes away the permissions of other users.
void requirePrivateFolder(const std::filesystem::path& folder) {
    std::error_code failure;
    std::filesystem::create_directories(folder.parent_path(), failure);
    if (::mkdir(folder.c_str(), 0700) == 0)
        return;
    if (errno != EEXIST)
        creationFailed("mkdir");
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0)
        storageFailed(SQLITE_CANTOPEN, systemReason("stat"));
    if ((status.st_mode & 077) != 0 && ::chmod(folder.c_str(), 0700) != 0)
        storageFailed(SQLITE_PERM, systemReason("chmod"));
}

/// SQLite would create the file with the permissions that the process's umask allows. SQLite gives
/// its journal the permissions of the file.
void createPrivateFile(const std::filesystem::path& file) {
    const posix::FileDescriptor created(
        ::open(file.c_str(), O_CREAT | O_EXCL | O_RDWR | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!created && errno != EEXIST)
        creationFailed("open");
}

/// Whether the file exists. Throws for anything but a regular file, for instance a symbolic link.
bool present(const std::filesystem::path& file) {
    struct stat status {};
    if (::lstat(file.c_str(), &status) != 0) {
        if (errno == ENOENT)
            return false;
        storageFailed(SQLITE_CANTOPEN, systemReason("lstat"));
    }
    if (!S_ISREG(status.st_mode))
        throw Failure(FailureKind::storage,
                      translated("There is something else in the place of the file with your "
                                 "passkeys. Move %1 away and try again.",
                                 {file.string()}),
                      "not a regular file");
    if ((status.st_mode & 077) != 0 && ::chmod(file.c_str(), 0600) != 0)
        storageFailed(SQLITE_PERM, systemReason("chmod"));
    return true;
}

/// SQLite refuses symbolic links anywhere in the path, but a home folder is often behind one.
std::filesystem::path withoutLinksAbove(const std::filesystem::path& file) {
    std::error_code failure;
    const auto folder = std::filesystem::canonical(file.parent_path(), failure);
    return failure ? file : folder / file.filename();
}

Bytes joined(const webauthn::PublicKey& key) {
    Bytes bytes(key.x.begin(), key.x.end());
    bytes.insert(bytes.end(), key.y.begin(), key.y.end());
    return bytes;
}

webauthn::PublicKey split(const Bytes& bytes) {
    webauthn::PublicKey key;
    if (bytes.size() != key.x.size() + key.y.size())
        storageFailed(SQLITE_CORRUPT, "a public key of another length");
    std::copy_n(bytes.begin(), key.x.size(), key.x.begin());
    std::copy_n(bytes.begin() + key.x.size(), key.y.size(), key.y.begin());
    return key;
}

KeyKeeper keeperOf(std::int64_t number) {
    if (number == static_cast<std::int64_t>(KeyKeeper::software))
        return KeyKeeper::software;
    if (number == static_cast<std::int64_t>(KeyKeeper::chip))
        return KeyKeeper::chip;
    storageFailed(SQLITE_CORRUPT, "a keeper of keys that is not known");
}

/// Keeps the file as it was if its tables change.
void bringUpToDate(Database& database, const std::filesystem::path& file) {
    const std::int64_t version = schemaVersion(database);
    if (version != schema::none && version != schema::current)
        keepFormerFile(file);
    requireCurrentSchema(database);
}

void insert(const Database& database, const CredentialRecord& record) {
    const Bytes publicKey = joined(record.publicKey);
    Statement(database,
              "INSERT INTO passkey (credential_id, relying_party, user_id, account_name, created,"
              " public_key, wrapped_private_key, keeper) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)")
        .bind(1, ByteView(record.credentialId))
        .bind(2, record.relyingPartyIdentifier)
        .bind(3, ByteView(record.userId))
        .bind(4, record.accountName)
        .bind(5, static_cast<std::int64_t>(record.created.time_since_epoch().count()))
        .bind(6, ByteView(publicKey))
        .bind(7, ByteView(record.wrappedPrivateKey))
        .bind(8, static_cast<std::int64_t>(record.keeper))
        .step();
}

/// Refused passkeys go first, because those without any reply may still be good.
void dropSurplus(const Database& database, const CredentialRecord& saved) {
    Statement(database, "DELETE FROM passkey WHERE number IN (SELECT number FROM passkey"
                        " WHERE relying_party = ?1 AND user_id = ?2 AND accepted = 0"
                        " ORDER BY refusals > 0, number DESC LIMIT -1 OFFSET ?3)")
        .bind(1, saved.relyingPartyIdentifier)
        .bind(2, ByteView(saved.userId))
        .bind(3, mostUnaccepted)
        .step();
}

/// The columns of a record, in each version of the tables. Not in the order of "created", because a
/// clock can be set back.
std::string selection(std::int64_t version, const std::string& where) {
    const std::string common =
        "SELECT credential_id, relying_party, user_id, account_name, created,"
        " public_key, wrapped_private_key, ";
    if (version == schema::onePerAccount)
        return common + "0, 1, 0, NULL FROM credential" + where +
               " ORDER BY created DESC, rowid DESC";
    const std::string noted =
        version == schema::severalPerAccount ? "0, NULL" : "keeper, last_used";
    return common + "refusals, accepted, " + noted + " FROM passkey" + where +
           " ORDER BY number DESC";
}

CredentialRecord recordIn(const Statement& statement) {
    CredentialRecord record;
    record.credentialId = statement.bytes(0);
    record.relyingPartyIdentifier = statement.text(1);
    record.userId = statement.bytes(2);
    record.accountName = statement.text(3);
    record.created = std::chrono::sys_seconds(std::chrono::seconds(statement.integer(4)));
    record.publicKey = split(statement.bytes(5));
    record.wrappedPrivateKey = statement.bytes(6);
    record.refusals = statement.integer(7);
    record.accepted = statement.integer(8) != 0;
    record.keeper = keeperOf(statement.integer(9));
    if (!statement.isNull(10))
        record.lastUsed = std::chrono::sys_seconds(std::chrono::seconds(statement.integer(10)));
    return record;
}

} // namespace

CredentialStore::CredentialStore(std::filesystem::path file) : file(std::move(file)) {}

void CredentialStore::save(const CredentialRecord& record) const {
    requirePrivateFolder(file.parent_path());
    if (!present(file))
        createPrivateFile(file);
    Database database(withoutLinksAbove(file));
    Transaction transaction(database);
    bringUpToDate(database, file);
    insert(database, record);
    dropSurplus(database, record);
    transaction.commit();
}

void CredentialStore::noteAccepted(std::string_view relyingPartyIdentifier,
                                   ByteView credentialId) const {
    change([&](const Database& database) {
        Statement(database, "UPDATE passkey SET accepted = 1, refusals = 0"
                            " WHERE relying_party = ?1 AND credential_id = ?2")
            .bind(1, relyingPartyIdentifier)
            .bind(2, credentialId)
            .step();
        Statement(database,
                  "DELETE FROM passkey WHERE relying_party = ?1 AND EXISTS"
                  " (SELECT 1 FROM passkey AS newer"
                  " WHERE newer.credential_id = ?2 AND newer.relying_party = passkey.relying_party"
                  " AND newer.user_id = passkey.user_id AND newer.number > passkey.number)")
            .bind(1, relyingPartyIdentifier)
            .bind(2, credentialId)
            .step();
    });
    dropFormerFile(file);
}

void CredentialStore::noteRefused(std::string_view relyingPartyIdentifier,
                                  ByteView credentialId) const {
    change([&](const Database& database) {
        Statement(database, "UPDATE passkey SET refusals = refusals + 1"
                            " WHERE relying_party = ?1 AND credential_id = ?2")
            .bind(1, relyingPartyIdentifier)
            .bind(2, credentialId)
            .step();
    });
}

void CredentialStore::noteUsed(std::string_view relyingPartyIdentifier, ByteView credentialId,
                               std::chrono::sys_seconds when) const {
    change([&](const Database& database) {
        Statement(database, "UPDATE passkey SET last_used = ?3"
                            " WHERE relying_party = ?1 AND credential_id = ?2")
            .bind(1, relyingPartyIdentifier)
            .bind(2, credentialId)
            .bind(3, static_cast<std::int64_t>(when.time_since_epoch().count()))
            .step();
    });
}

void CredentialStore::remove(ByteView credentialId) const {
    change([&](const Database& database) {
        Statement(database, "DELETE FROM passkey WHERE credential_id = ?1")
            .bind(1, credentialId)
            .step();
    });
    dropFormerFile(file);
}

void CredentialStore::change(const std::function<void(const Database&)>& work) const {
    if (!present(file))
        return;
    Database database(withoutLinksAbove(file));
    Transaction transaction(database);
    if (schemaVersion(database) == schema::none)
        return;
    bringUpToDate(database, file);
    work(database);
    transaction.commit();
}

std::vector<CredentialRecord> CredentialStore::find(std::string_view relyingPartyIdentifier) const {
    return select(relyingPartyIdentifier);
}

std::vector<CredentialRecord> CredentialStore::all() const {
    return select(std::nullopt);
}

std::vector<CredentialRecord>
CredentialStore::select(std::optional<std::string_view> relyingPartyIdentifier) const {
    if (!present(file))
        return {};
    Database database(withoutLinksAbove(file));
    const std::int64_t version = schemaVersion(database);
    if (version == schema::none)
        return {};
    // An earlier version is read as it is, so that a disk without room does not prevent a sign-in.
    const char* const condition = relyingPartyIdentifier ? " WHERE relying_party = ?1" : "";
    Statement statement(database, selection(version, condition));
    if (relyingPartyIdentifier)
        statement.bind(1, *relyingPartyIdentifier);
    std::vector<CredentialRecord> records;
    while (statement.step())
        records.push_back(recordIn(statement));
    return records;
}

} // namespace kelo::authenticator
