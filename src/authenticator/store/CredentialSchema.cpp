#include "authenticator/store/CredentialSchema.h"

#include "base/Failure.h"
#include "base/Translation.h"

#include <string>

namespace kelo::authenticator {

namespace {

// "Kelo" in ASCII. Identifies the file for file(1) and for this class.
constexpr std::int64_t applicationId = 0x4B656C6F;

constexpr std::string_view currentTable = "CREATE TABLE passkey ("
                                          " number INTEGER PRIMARY KEY,"
                                          " credential_id BLOB NOT NULL UNIQUE,"
                                          " relying_party TEXT NOT NULL,"
                                          " user_id BLOB NOT NULL,"
                                          " account_name TEXT NOT NULL,"
                                          " created INTEGER NOT NULL," // seconds since 1970
                                          " public_key BLOB NOT NULL," // x and y, 32 bytes each
                                          " wrapped_private_key BLOB NOT NULL,"
                                          " accepted INTEGER NOT NULL DEFAULT 0,"
                                          " refusals INTEGER NOT NULL DEFAULT 0,"
                                          " keeper INTEGER NOT NULL DEFAULT 0,"
                                          " last_used INTEGER"
                                          ") STRICT";

/// A passkey of the first version may be the one that the user signs in with, so it counts as
/// accepted: it stays until the service accepts a newer one.
constexpr std::string_view takeOver =
    "INSERT INTO passkey (credential_id, relying_party, user_id, account_name, created, public_key,"
    " wrapped_private_key, accepted)"
    " SELECT credential_id, relying_party, user_id, account_name, created, public_key,"
    " wrapped_private_key, 1 FROM credential ORDER BY created, rowid";

} // namespace

std::int64_t schemaVersion(Database& database) {
    const std::int64_t application = database.integer("PRAGMA application_id");
    const std::int64_t version = database.integer("PRAGMA user_version");
    if (application == 0 && version == 0 &&
        database.integer("SELECT count(*) FROM sqlite_schema") == 0)
        return schema::none;
    if (application != applicationId)
        throw Failure(
            FailureKind::storage,
            translated("The file with your passkeys belongs to another program. It was left as it "
                       "is; move it away and register new passkeys."),
            "another application_id");
    if (version > schema::current)
        throw Failure(
            FailureKind::storage,
            translated(
                "Your passkeys were written by a newer version of Kelo. Update Kelo, then try "
                "again."),
            "user_version " + std::to_string(version));
    if (version < schema::onePerAccount)
        storageFailed(SQLITE_CORRUPT, "user_version " + std::to_string(version));
    // A query reads only a part of the file, so it may miss a damaged page. Find it before a write
    // spreads the damage.
    if (const std::string report = database.text("PRAGMA quick_check(1)"); report != "ok")
        storageFailed(SQLITE_CORRUPT, report);
    return version;
}

void requireCurrentSchema(Database& database) {
    const std::int64_t version = schemaVersion(database);
    if (version == schema::current)
        return;
    if (version == schema::severalPerAccount) {
        database.execute("ALTER TABLE passkey ADD COLUMN keeper INTEGER NOT NULL DEFAULT 0");
        database.execute("ALTER TABLE passkey ADD COLUMN last_used INTEGER");
    } else {
        database.execute(currentTable);
    }
    if (version == schema::onePerAccount) {
        database.execute(takeOver);
        database.execute("DROP TABLE credential");
    }
    database.execute("PRAGMA application_id = " + std::to_string(applicationId));
    database.execute("PRAGMA user_version = " + std::to_string(schema::current));
}

} // namespace kelo::authenticator
