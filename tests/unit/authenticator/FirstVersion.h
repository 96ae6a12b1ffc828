#pragma once

#include "authenticator/store/CredentialStore.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <vector>

namespace kelo {

/// Writes a file as the first version of the store did: one passkey for each account.
inline void writeFirstVersion(const std::filesystem::path& file,
                              const std::vector<authenticator::CredentialRecord>& records) {
    std::filesystem::create_directories(file.parent_path());
    sqlite3* raw = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &raw), SQLITE_OK);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> connection(raw, sqlite3_close);
    const char* tables = "CREATE TABLE credential (credential_id BLOB NOT NULL PRIMARY KEY,"
                         " relying_party TEXT NOT NULL, user_id BLOB NOT NULL,"
                         " account_name TEXT NOT NULL, created INTEGER NOT NULL,"
                         " public_key BLOB NOT NULL, wrapped_private_key BLOB NOT NULL,"
                         " UNIQUE (relying_party, user_id)) STRICT;"
                         "PRAGMA application_id = 0x4B656C6F; PRAGMA user_version = 1";
    ASSERT_EQ(sqlite3_exec(raw, tables, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(raw);
    for (const authenticator::CredentialRecord& record : records) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(raw, "INSERT INTO credential VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)", -1,
                           &statement, nullptr);
        const auto bind = [statement](int index, const auto& bytes) {
            sqlite3_bind_blob(statement, index, bytes.data(), static_cast<int>(bytes.size()),
                              SQLITE_TRANSIENT);
        };
        const auto bindText = [statement](int index, const std::string& text) {
            sqlite3_bind_text(statement, index, text.c_str(), -1, SQLITE_TRANSIENT);
        };
        Bytes publicKey(record.publicKey.x.begin(), record.publicKey.x.end());
        publicKey.insert(publicKey.end(), record.publicKey.y.begin(), record.publicKey.y.end());
        bind(1, record.credentialId);
        bindText(2, record.relyingPartyIdentifier);
        bind(3, record.userId);
        bindText(4, record.accountName);
        sqlite3_bind_int64(statement, 5, record.created.time_since_epoch().count());
        bind(6, publicKey);
        bind(7, record.wrappedPrivateKey);
        EXPECT_EQ(sqlite3_step(statement), SQLITE_DONE) << sqlite3_errmsg(raw);
        sqlite3_finalize(statement);
    }
}

} // namespace kelo
