#pragma once

#include "Hex.h"

#include "authenticator/store/CredentialStore.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelo {

/// A file with passkeys as an earlier version of the store has left it.
class EarlierFile {
public:
    /// tables: in SQL.
    EarlierFile(const std::filesystem::path& file, int version, const std::string& tables) {
        std::filesystem::create_directories(file.parent_path());
        sqlite3* raw = nullptr;
        EXPECT_EQ(sqlite3_open(file.c_str(), &raw), SQLITE_OK);
        connection.reset(raw);
        execute(tables +
                "; PRAGMA application_id = 0x4B656C6F;"
                " PRAGMA user_version = " +
                std::to_string(version));
    }

    /// Inserts what both versions have of a record, and then the rest.
    void insert(const std::string& table, const authenticator::CredentialRecord& record,
                const std::string& rest = "", const std::string& restOfValues = "") const {
        Bytes publicKey(record.publicKey.x.begin(), record.publicKey.x.end());
        publicKey.insert(publicKey.end(), record.publicKey.y.begin(), record.publicKey.y.end());
        execute("INSERT INTO " + table +
                " (credential_id, relying_party, user_id, account_name, created, public_key,"
                " wrapped_private_key" +
                rest + ") VALUES (" + blob(record.credentialId) + ", '" +
                record.relyingPartyIdentifier + "', " + blob(record.userId) + ", '" +
                record.accountName + "', " +
                std::to_string(record.created.time_since_epoch().count()) + ", " + blob(publicKey) +
                ", " + blob(record.wrappedPrivateKey) + restOfValues + ")");
    }

private:
    static std::string blob(ByteView bytes) { return "x'" + toHex(bytes) + "'"; }

    void execute(const std::string& sql) const {
        EXPECT_EQ(sqlite3_exec(connection.get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(connection.get());
    }

    struct Closer {
        void operator()(sqlite3* open) const { sqlite3_close(open); }
    };
    std::unique_ptr<sqlite3, Closer> connection;
};

/// The first version: one passkey for each account.
inline void writeFirstVersion(const std::filesystem::path& file,
                              const std::vector<authenticator::CredentialRecord>& records) {
    const EarlierFile first(
        file, 1,
        "CREATE TABLE credential (credential_id BLOB NOT NULL PRIMARY KEY,"
        " relying_party TEXT NOT NULL, user_id BLOB NOT NULL, account_name TEXT NOT NULL,"
        " created INTEGER NOT NULL, public_key BLOB NOT NULL, wrapped_private_key BLOB NOT NULL,"
        " UNIQUE (relying_party, user_id)) STRICT");
    for (const authenticator::CredentialRecord& record : records)
        first.insert("credential", record);
}

/// The second version, the records in their order.
inline void writeSecondVersion(const std::filesystem::path& file,
                               const std::vector<authenticator::CredentialRecord>& records) {
    const EarlierFile second(
        file, 2,
        "CREATE TABLE passkey (number INTEGER PRIMARY KEY, credential_id BLOB NOT NULL UNIQUE,"
        " relying_party TEXT NOT NULL, user_id BLOB NOT NULL, account_name TEXT NOT NULL,"
        " created INTEGER NOT NULL, public_key BLOB NOT NULL, wrapped_private_key BLOB NOT NULL,"
        " accepted INTEGER NOT NULL DEFAULT 0, refusals INTEGER NOT NULL DEFAULT 0) STRICT");
    for (const authenticator::CredentialRecord& record : records)
        second.insert("passkey", record, ", accepted", record.accepted ? ", 1" : ", 0");
}

} // namespace kelo
