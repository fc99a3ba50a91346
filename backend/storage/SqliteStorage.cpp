// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/SqliteStorage.h"

#include "storage/Statement.h"

#include <sys/stat.h>

namespace lorvane::backend {

namespace {

constexpr const char* schema = R"sql(
CREATE TABLE IF NOT EXISTS device (
  id INTEGER PRIMARY KEY, device TEXT NOT NULL UNIQUE, registered INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS token (
  hash BLOB PRIMARY KEY, device INTEGER NOT NULL REFERENCES device(id), sequence INTEGER NOT NULL) WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS token_device ON token(device);
CREATE TABLE IF NOT EXISTS adaptation (
  device INTEGER NOT NULL REFERENCES device(id), engine TEXT NOT NULL, bytes BLOB NOT NULL,
  PRIMARY KEY (device, engine)) WITHOUT ROWID;
PRAGMA user_version = 1;
)sql";

constexpr int schemaVersion = 1;

std::string_view bytesOf(const Digest& digest) {
    return {reinterpret_cast<const char*>(digest.data()), digest.size()};
}

sqlite3* openDatabase(const std::filesystem::path& file) {
    const auto former = ::umask(0077);
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(
        file.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr);
    ::umask(former);
    if (result == SQLITE_OK)
        return database;
    const std::string reason = database ? sqlite3_errmsg(database) : "out of memory";
    sqlite3_close_v2(database);
    throw StorageError(file.string() + ": " + reason);
}

// Rolls back unless the work got as far as commit().
class Transaction {
 public:
    explicit Transaction(sqlite3* database) : database_(database) {
        Statement(database, "BEGIN IMMEDIATE").step();
    }
    ~Transaction() {
        if (!committed_)
            sqlite3_exec(database_, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit() {
        Statement(database_, "COMMIT").step();
        committed_ = true;
    }

 private:
    sqlite3* database_;
    bool committed_ = false;
};

} // namespace

SqliteStorage::SqliteStorage(const std::filesystem::path& file)
    : database_(openDatabase(file), &sqlite3_close_v2) {
    sqlite3_busy_timeout(database_.get(), 5000);
    execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = ON;");
    migrate();
}

SqliteStorage::~SqliteStorage() = default;

void SqliteStorage::execute(const char* sql) {
    if (sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        throw StorageError(sqlite3_errmsg(database_.get()));
}

void SqliteStorage::migrate() {
    std::int64_t version = 0;
    {
        Statement read(database_.get(), "PRAGMA user_version");
        if (read.step())
            version = read.integer(0);
    }
    if (version > schemaVersion)
        throw StorageError("the database was written by a newer lorvane-backend");
    if (version < schemaVersion)
        execute(schema);
}

DeviceId SqliteStorage::deviceRow(std::string_view device) {
    Statement insert(database_.get(), "INSERT INTO device(device, registered) VALUES (?, unixepoch()) "
                                      "ON CONFLICT(device) DO UPDATE SET device = device RETURNING id");
    insert.text(device);
    if (!insert.step())
        throw StorageError("no row came back for a device");
    const auto id = insert.integer(0);
    insert.step();
    return id;
}

DeviceId SqliteStorage::registerDevice(std::string_view device, const Digest& token) {
    const std::lock_guard lock(mutex_);
    Transaction transaction(database_.get());
    const auto id = deviceRow(device);
    // A running number a device, since times can tie.
    Statement(database_.get(), "INSERT INTO token(hash, device, sequence) VALUES (?, ?, "
                               "(SELECT coalesce(max(sequence), 0) + 1 FROM token WHERE device = ?))")
        .blob(bytesOf(token))
        .bind(id)
        .bind(id)
        .step();
    Statement(database_.get(), "DELETE FROM token WHERE device = ? AND hash NOT IN "
                               "(SELECT hash FROM token WHERE device = ? ORDER BY sequence DESC LIMIT ?)")
        .bind(id)
        .bind(id)
        .bind(tokensPerDevice)
        .step();
    transaction.commit();
    return id;
}

std::optional<DeviceId> SqliteStorage::deviceOfToken(const Digest& token) {
    const std::lock_guard lock(mutex_);
    Statement read(database_.get(), "SELECT device FROM token WHERE hash = ?");
    read.blob(bytesOf(token));
    if (!read.step())
        return std::nullopt;
    return read.integer(0);
}

std::optional<std::string> SqliteStorage::adaptation(DeviceId device, std::string_view engine) {
    const std::lock_guard lock(mutex_);
    Statement read(database_.get(), "SELECT bytes FROM adaptation WHERE device = ? AND engine = ?");
    read.bind(device).text(engine);
    if (!read.step())
        return std::nullopt;
    return read.bytes(0);
}

void SqliteStorage::keepAdaptation(DeviceId device, std::string_view engine, std::string_view bytes) {
    const std::lock_guard lock(mutex_);
    Statement(database_.get(), "INSERT INTO adaptation(device, engine, bytes) VALUES (?, ?, ?) "
                               "ON CONFLICT(device, engine) DO UPDATE SET bytes = excluded.bytes")
        .bind(device)
        .text(engine)
        .blob(bytes)
        .step();
}

} // namespace lorvane::backend
