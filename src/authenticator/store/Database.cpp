#include "authenticator/store/Database.h"

#include "base/Failure.h"
#include "base/Translation.h"

#include <utility>

namespace kelo::authenticator {

namespace {

std::string sentenceFor(int code) {
    switch (code & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return translated(
            "The file with your passkeys is damaged. It was left as it is; restore it from a "
            "backup, "
            "or move it away and register new passkeys.");
    case SQLITE_FULL:
        return translated(
            "There is no room left on the disk for your passkeys. Free some space and try "
            "again.");
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return translated(
            "Another program is using the file with your passkeys. Try again in a moment.");
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return translated(
            "Kelo may not write the file with your passkeys. Check the permissions of its "
            "folder and "
            "try again.");
    case SQLITE_CANTOPEN:
        return translated(
            "The file with your passkeys could not be opened. Check the permissions of its "
            "folder "
            "and try again.");
    default:
        return translated(
            "Your passkeys could not be read or written. Check the disk they are on and try "
            "again.");
    }
}

} // namespace

void storageFailed(int sqliteCode, std::string cause) {
    throw Failure(FailureKind::storage, sentenceFor(sqliteCode), std::move(cause));
}

Database::Database(const std::filesystem::path& file) {
    sqlite3* opened = nullptr;
    // SQLite checks for symbolic links while it opens the file, so none can be put there in
    // between.
    const int code = sqlite3_open_v2(file.c_str(), &opened,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW |
                                         SQLITE_OPEN_FULLMUTEX | SQLITE_OPEN_EXRESCODE,
                                     nullptr);
    connection.reset(opened);
    if (code != SQLITE_OK)
        storageFailed(code, opened ? sqlite3_errmsg(opened) : sqlite3_errstr(code));
    sqlite3_busy_timeout(opened, 5000);
    // The file may come from anyone: nothing in it may run code or reach other files.
    sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    // The file may belong to another program, whose write-ahead log must stay.
    sqlite3_db_config(opened, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    // EXTRA also syncs the folder. A passkey that the service knows must survive a power failure.
    execute("PRAGMA synchronous = EXTRA");
    // A replaced private key must not stay in a free page.
    execute("PRAGMA secure_delete = ON");
}

void Database::execute(std::string_view sql) {
    Statement statement(*this, sql);
    while (statement.step()) {
    }
}

std::int64_t Database::integer(std::string_view sql) {
    Statement statement(*this, sql);
    if (!statement.step())
        storageFailed(SQLITE_CORRUPT, "no row: " + std::string(sql));
    return statement.integer(0);
}

std::string Database::text(std::string_view sql) {
    Statement statement(*this, sql);
    if (!statement.step())
        storageFailed(SQLITE_CORRUPT, "no row: " + std::string(sql));
    return statement.text(0);
}

void Database::fail() const {
    storageFailed(sqlite3_extended_errcode(connection.get()), sqlite3_errmsg(connection.get()));
}

Statement::Statement(const Database& database, std::string_view sql) : database(database) {
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v2(database.handle(), sql.data(), static_cast<int>(sql.size()),
                                        &prepared, nullptr);
    statement.reset(prepared);
    check(code);
}

Statement& Statement::bind(int index, std::int64_t value) {
    check(sqlite3_bind_int64(statement.get(), index, value));
    return *this;
}

Statement& Statement::bind(int index, std::string_view value) {
    check(sqlite3_bind_text(statement.get(), index, value.data(), static_cast<int>(value.size()),
                            SQLITE_TRANSIENT));
    return *this;
}

Statement& Statement::bind(int index, ByteView value) {
    check(
        sqlite3_bind_blob64(statement.get(), index, value.data(), value.size(), SQLITE_TRANSIENT));
    return *this;
}

bool Statement::step() {
    const int code = sqlite3_step(statement.get());
    if (code == SQLITE_ROW)
        return true;
    if (code != SQLITE_DONE)
        database.fail();
    return false;
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(statement.get(), column);
}

std::string Statement::text(int column) const {
    return textOf(bytes(column));
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(statement.get(), column) == SQLITE_NULL;
}

Bytes Statement::bytes(int column) const {
    const auto* data =
        static_cast<const std::uint8_t*>(sqlite3_column_blob(statement.get(), column));
    const int size = sqlite3_column_bytes(statement.get(), column);
    return data ? Bytes(data, data + size) : Bytes();
}

void Statement::check(int code) const {
    if (code != SQLITE_OK)
        database.fail();
}

Transaction::Transaction(Database& database) : database(database) {
    database.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    // Fails if a failed statement has already rolled back, which is harmless.
    if (open)
        sqlite3_exec(database.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::commit() {
    database.execute("COMMIT");
    open = false;
}

} // namespace kelo::authenticator
