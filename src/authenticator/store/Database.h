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

/// A connection to an existing SQLite file, which must not be a symbolic link. Throws a Failure of
/// kind storage.
class Database {
public:
    explicit Database(const std::filesystem::path& file);

    void execute(std::string_view sql);
    /// The first column of the first row.
    std::int64_t integer(std::string_view sql);
    std::string text(std::string_view sql);

    /// Owned by this object.
    sqlite3* handle() const { return connection.get(); }
    /// Throws a Failure for the last error of this connection.
    [[noreturn]] void fail() const;

private:
    std::unique_ptr<sqlite3, SqliteDeleter> connection;
};

/// A prepared statement. Parameters count from 1, columns from 0.
class Statement {
public:
    Statement(const Database& database, std::string_view sql);

    Statement& bind(int index, std::int64_t value);
    Statement& bind(int index, std::string_view value);
    Statement& bind(int index, ByteView value);

    /// Moves to the next row. False if there is none.
    bool step();

    std::int64_t integer(int column) const;
    std::string text(int column) const;
    Bytes bytes(int column) const;
    bool isNull(int column) const;

private:
    void check(int code) const;

    const Database& database;
    std::unique_ptr<sqlite3_stmt, SqliteDeleter> statement;
};

/// A transaction. Excludes other writers from the start. The destructor rolls back what was not
/// committed.
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

/// Throws a Failure of kind storage. The SQLite result code selects the sentence for the user.
[[noreturn]] void storageFailed(int sqliteCode, std::string cause);

} // namespace kelo::authenticator
