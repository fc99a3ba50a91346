// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/SqliteStorage.h"

#include "storage/Statement.h"
#include "storage/Transaction.h"

#include <array>
#include <sys/stat.h>

namespace lorvane::backend {

namespace {

// One step a version of the database; a step that has been released is never changed.
constexpr std::array<const char*, 3> steps{
    R"sql(
CREATE TABLE IF NOT EXISTS device (
  id INTEGER PRIMARY KEY, device TEXT NOT NULL UNIQUE, registered INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS token (
  hash BLOB PRIMARY KEY, device INTEGER NOT NULL REFERENCES device(id), sequence INTEGER NOT NULL) WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS token_device ON token(device);
CREATE TABLE IF NOT EXISTS adaptation (
  device INTEGER NOT NULL REFERENCES device(id), engine TEXT NOT NULL, bytes BLOB NOT NULL,
  PRIMARY KEY (device, engine)) WITHOUT ROWID;
)sql",
    // A person is the lowest of the devices that are theirs; NULL stands for the device itself.
    R"sql(
ALTER TABLE device ADD COLUMN person INTEGER REFERENCES device(id);
CREATE INDEX device_person ON device(coalesce(person, id));
CREATE TABLE referral (
  id INTEGER PRIMARY KEY, code TEXT NOT NULL UNIQUE, device INTEGER NOT NULL UNIQUE REFERENCES device(id));
CREATE TABLE onboarded (
  device INTEGER PRIMARY KEY REFERENCES device(id), source TEXT NOT NULL, at INTEGER NOT NULL);
CREATE TABLE allowance (
  bucket TEXT NOT NULL, key INTEGER NOT NULL, full_at INTEGER NOT NULL, PRIMARY KEY (bucket, key)) WITHOUT ROWID;
CREATE TABLE seen_take (
  device INTEGER NOT NULL REFERENCES device(id), take BLOB NOT NULL, purpose TEXT NOT NULL, at INTEGER NOT NULL,
  PRIMARY KEY (device, take, purpose)) WITHOUT ROWID;
CREATE INDEX seen_take_at ON seen_take(at);
CREATE TABLE phone_words (
  device INTEGER NOT NULL REFERENCES device(id), day INTEGER NOT NULL, words INTEGER NOT NULL,
  PRIMARY KEY (device, day)) WITHOUT ROWID;
)sql",
    R"sql(
CREATE TABLE stranger (
  bucket TEXT NOT NULL, key INTEGER NOT NULL, full_at INTEGER NOT NULL, PRIMARY KEY (bucket, key)) WITHOUT ROWID;
CREATE INDEX stranger_full_at ON stranger(full_at);
)sql"};

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

} // namespace

SqliteStorage::SqliteStorage(const std::filesystem::path& file, Now now)
    : now_(std::move(now)), database_(openDatabase(file), &sqlite3_close_v2) {
    sqlite3_busy_timeout(database_.get(), 5000);
    execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = ON;");
    migrate();
}

SqliteStorage::~SqliteStorage() = default;

void SqliteStorage::execute(const char* sql) {
    if (sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        throw StorageError(sqlite3_errmsg(database_.get()));
}

// Under the writer's lock from the look at the version on, so that two programs cannot both take a step.
void SqliteStorage::migrate() {
    Transaction transaction(database_.get());
    std::size_t version = 0;
    {
        Statement read(database_.get(), "PRAGMA user_version");
        if (read.step())
            version = static_cast<std::size_t>(read.integer(0));
    }
    if (version > steps.size())
        throw StorageError("the database was written by a newer lorvane-backend");
    if (version == steps.size())
        return;
    for (auto step = version; step < steps.size(); ++step)
        execute(steps.at(step));
    execute(("PRAGMA user_version = " + std::to_string(steps.size())).c_str());
    transaction.commit();
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
        .blob(asBytes(token))
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
    read.blob(asBytes(token));
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
