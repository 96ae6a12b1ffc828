#include "authenticator/store/CredentialStore.h"

#include "authenticator/store/Database.h"
#include "base/Failure.h"
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

// "Kelo" in ASCII. Identifies the file for file(1) and for this class.
constexpr std::int64_t applicationId = 0x4B656C6F;
constexpr std::int64_t schemaVersion = 1;

constexpr std::string_view schema = "CREATE TABLE credential ("
                                    " credential_id BLOB NOT NULL PRIMARY KEY,"
                                    " relying_party TEXT NOT NULL,"
                                    " user_id BLOB NOT NULL,"
                                    " account_name TEXT NOT NULL,"
                                    " created INTEGER NOT NULL," // seconds since 1970
                                    " public_key BLOB NOT NULL," // x and y, 32 bytes each
                                    " wrapped_private_key BLOB NOT NULL,"
                                    " UNIQUE (relying_party, user_id)"
                                    ") STRICT";

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
                      "There is something else in the place of the file with your passkeys. Move " +
                          file.string() + " away and try again.",
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

/// Whether the file holds our tables. False for an empty file, for instance after a crash.
bool hasOurSchema(Database& database) {
    const std::int64_t application = database.integer("PRAGMA application_id");
    const std::int64_t version = database.integer("PRAGMA user_version");
    if (application == 0 && version == 0 &&
        database.integer("SELECT count(*) FROM sqlite_schema") == 0)
        return false;
    if (application != applicationId)
        throw Failure(FailureKind::storage,
                      "The file with your passkeys belongs to another program. It was left as it "
                      "is; move it away and register new passkeys.",
                      "another application_id");
    if (version > schemaVersion)
        throw Failure(
            FailureKind::storage,
            "Your passkeys were written by a newer version of Kelo. Update Kelo, then try "
            "again.",
            "user_version " + std::to_string(version));
    if (version != schemaVersion)
        storageFailed(SQLITE_CORRUPT, "user_version " + std::to_string(version));
    // A query reads only a part of the file, so it may miss a damaged page. Find it before a write
    // spreads the damage.
    if (const std::string report = database.text("PRAGMA quick_check(1)"); report != "ok")
        storageFailed(SQLITE_CORRUPT, report);
    return true;
}

void createSchema(Database& database) {
    database.execute(schema);
    database.execute("PRAGMA application_id = " + std::to_string(applicationId));
    database.execute("PRAGMA user_version = " + std::to_string(schemaVersion));
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

} // namespace

CredentialStore::CredentialStore(std::filesystem::path file) : file(std::move(file)) {}

void CredentialStore::save(const CredentialRecord& record) const {
    requirePrivateFolder(file.parent_path());
    if (!present(file))
        createPrivateFile(file);
    Database database(withoutLinksAbove(file));
    Transaction transaction(database);
    if (!hasOurSchema(database))
        createSchema(database);
    Statement(database, "DELETE FROM credential WHERE relying_party = ?1 AND user_id = ?2")
        .bind(1, record.relyingPartyIdentifier)
        .bind(2, ByteView(record.userId))
        .step();
    const Bytes publicKey = joined(record.publicKey);
    Statement(database, "INSERT INTO credential VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)")
        .bind(1, ByteView(record.credentialId))
        .bind(2, record.relyingPartyIdentifier)
        .bind(3, ByteView(record.userId))
        .bind(4, record.accountName)
        .bind(5, static_cast<std::int64_t>(record.created.time_since_epoch().count()))
        .bind(6, ByteView(publicKey))
        .bind(7, ByteView(record.wrappedPrivateKey))
        .step();
    transaction.commit();
}

std::vector<CredentialRecord> CredentialStore::find(std::string_view relyingPartyIdentifier) const {
    if (!present(file))
        return {};
    Database database(withoutLinksAbove(file));
    if (!hasOurSchema(database))
        return {};
    Statement statement(
        database, "SELECT credential_id, relying_party, user_id, account_name, created, public_key,"
                  " wrapped_private_key FROM credential WHERE relying_party = ?1"
                  " ORDER BY created DESC, rowid DESC");
    statement.bind(1, relyingPartyIdentifier);
    std::vector<CredentialRecord> records;
    while (statement.step()) {
        CredentialRecord record;
        record.credentialId = statement.bytes(0);
        record.relyingPartyIdentifier = statement.text(1);
        record.userId = statement.bytes(2);
        record.accountName = statement.text(3);
        record.created = std::chrono::sys_seconds(std::chrono::seconds(statement.integer(4)));
        record.publicKey = split(statement.bytes(5));
        record.wrappedPrivateKey = statement.bytes(6);
        records.push_back(std::move(record));
    }
    return records;
}

} // namespace kelo::authenticator
