#pragma once

#include "base/Bytes.h"

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace kelo::authenticator {

struct SqliteDeleter {
    void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

/// A connection to an SQLite file that must exist and must not be a symbolic link. Every failure is
/// a Failure of kind storage with a sentence for the user.
class Database {
public:
    explicit Database(const std::filesystem::path& file);

    void execute(std::string_view sql);
    /// The first column of the first row.
    std::int64_t integer(std::string_view sql);
    std::string text(std::string_view sql);

    sqlite3* handle() const { return connection.get(); }
    [[noreturn]] void fail() const;

private:
    std::unique_ptr<sqlite3, SqliteDeleter> connection;
};

/// A prepared statement: parameters are bound from 1, columns read from 0.
class Statement {
public:
    Statement(const Database& database, std::string_view sql);

    Statement& bind(int index, std::int64_t value);
    Statement& bind(int index, std::string_view value);
    Statement& bind(int index, ByteView value);

    /// Whether there is a (next) row.
    bool step();

    std::int64_t integer(int column) const;
    std::string text(int column) const;
    Bytes bytes(int column) const;

private:
    void check(int code) const;

    const Database& database;
    std::unique_ptr<sqlite3_stmt, SqliteDeleter> statement;
};

/// Rolls back unless it was committed. Locks out other writers from its beginning.
class Transaction {
public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();

private:
    Database& database;
    bool open = true;
};

/// The error for passkeys that cannot be read or written, by SQLite's reason for it.
[[noreturn]] void storageFailed(int sqliteCode, std::string cause);

} // namespace kelo::authenticator
