#pragma once

#include "authenticator/store/CredentialStore.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kelo {

/// Writes a file as the second version of the store did, the records in their order.
inline void writeSecondVersion(const std::filesystem::path& file,
                               const std::vector<authenticator::CredentialRecord>& records) {
    std::filesystem::create_directories(file.parent_path());
    sqlite3* raw = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &raw), SQLITE_OK);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> connection(raw, sqlite3_close);
    const auto execute = [raw](const std::string& sql) {
        ASSERT_EQ(sqlite3_exec(raw, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(raw);
    };
    execute(
        "CREATE TABLE passkey (number INTEGER PRIMARY KEY, credential_id BLOB NOT NULL UNIQUE,"
        " relying_party TEXT NOT NULL, user_id BLOB NOT NULL, account_name TEXT NOT NULL,"
        " created INTEGER NOT NULL, public_key BLOB NOT NULL, wrapped_private_key BLOB NOT NULL,"
        " accepted INTEGER NOT NULL DEFAULT 0, refusals INTEGER NOT NULL DEFAULT 0) STRICT;"
        "PRAGMA application_id = 0x4B656C6F; PRAGMA user_version = 2");
    const auto blob = [](const auto& bytes) {
        std::string text = "x'";
        for (const std::uint8_t byte : bytes) {
            constexpr const char* digits = "0123456789abcdef";
            text += {digits[byte >> 4], digits[byte & 15]};
        }
        return text + "'";
    };
    for (const authenticator::CredentialRecord& record : records) {
        Bytes publicKey(record.publicKey.x.begin(), record.publicKey.x.end());
        publicKey.insert(publicKey.end(), record.publicKey.y.begin(), record.publicKey.y.end());
        execute("INSERT INTO passkey (credential_id, relying_party, user_id, account_name, created,"
                " public_key, wrapped_private_key, accepted) VALUES (" +
                blob(record.credentialId) + ", '" + record.relyingPartyIdentifier + "', " +
                blob(record.userId) + ", '" + record.accountName + "', " +
                std::to_string(record.created.time_since_epoch().count()) + ", " + blob(publicKey) +
                ", " + blob(record.wrappedPrivateKey) + ", " +
                std::to_string(static_cast<int>(record.accepted)) + ")");
    }
}

} // namespace kelo
