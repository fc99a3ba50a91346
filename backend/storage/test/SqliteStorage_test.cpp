// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/SqliteStorage.h"
#include "storage/StorageError.h"
#include "storage/test/StorageContract.h"
#include "testing/MemoryStorage.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;

namespace {
constexpr const char* deviceA = "6F9619FF-8B86-D011-B42D-00C04FC964FF";

constexpr std::chrono::system_clock::time_point noon{std::chrono::hours(24) * 20'000 +
                                                     std::chrono::hours(12)};

class SqliteWorld : public StorageWorld {
 public:
    Storage& storage() override { return storage_; }
    void advance(std::chrono::milliseconds time) override { now_ += time; }

 private:
    TemporaryFolder folder_;
    std::chrono::system_clock::time_point now_ = noon;
    SqliteStorage storage_{folder_ / "backend.sqlite", [this] { return now_; }};
};

class MemoryWorld : public StorageWorld {
 public:
    Storage& storage() override { return storage_; }
    void advance(std::chrono::milliseconds time) override { now_ += time; }

 private:
    std::chrono::system_clock::time_point now_ = noon;
    MemoryStorage storage_{[this] { return now_; }};
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Kinds, StorageContract,
    ::testing::Values(StorageKind{"Sqlite", [] { return std::make_unique<SqliteWorld>(); }},
                      StorageKind{"Memory", [] { return std::make_unique<MemoryWorld>(); }}),
    nameOfKind);

class SqliteStorageTest : public ::testing::Test {
 protected:
    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_ / "backend.sqlite";
    SqliteStorage storage_{file_};
};

TEST_F(SqliteStorageTest, EverythingIsThereAfterAReopening) {
    const auto id = storage_.registerDevice(deviceA, sha256("one"));
    storage_.keepAdaptation(id, "engine", "learnt");
    SqliteStorage again(file_);
    EXPECT_EQ(again.deviceOfToken(sha256("one")), id);
    EXPECT_EQ(again.adaptation(id, "engine"), "learnt");
}

TEST_F(SqliteStorageTest, TheTokenItselfIsNowhereInTheFiles) {
    const auto token = newToken();
    storage_.registerDevice(deviceA, sha256(token));
    std::string all = lorvane::backend::testing::readFile(file_);
    for (const char* more : {"-wal", "-shm"})
        if (std::filesystem::exists(file_.string() + more))
            all += lorvane::backend::testing::readFile(file_.string() + more);
    EXPECT_NE(all.find(deviceA), std::string::npos);
    EXPECT_EQ(all.find(token), std::string::npos);
}

TEST_F(SqliteStorageTest, TheFileIsForItsOwnerAlone) {
    const auto permissions = std::filesystem::status(file_).permissions();
    EXPECT_EQ(permissions & std::filesystem::perms::all,
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST(SqliteStorage, ADatabaseOfTheFirstVersionIsTakenAlongAndANewerOneRefused) {
    const TemporaryFolder folder;
    const auto file = folder / "old.sqlite";
    const auto run = [&](const char* sql) {
        sqlite3* raw = nullptr;
        sqlite3_open(file.c_str(), &raw);
        EXPECT_EQ(sqlite3_exec(raw, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(raw);
        sqlite3_close(raw);
    };
    run("CREATE TABLE device (id INTEGER PRIMARY KEY, device TEXT NOT NULL UNIQUE, registered INTEGER NOT "
        "NULL);"
        "CREATE TABLE token (hash BLOB PRIMARY KEY, device INTEGER NOT NULL REFERENCES device(id),"
        " sequence INTEGER NOT NULL) WITHOUT ROWID;"
        "CREATE INDEX token_device ON token(device);"
        "CREATE TABLE adaptation (device INTEGER NOT NULL REFERENCES device(id), engine TEXT NOT NULL,"
        " bytes BLOB NOT NULL, PRIMARY KEY (device, engine)) WITHOUT ROWID;"
        "INSERT INTO device VALUES (5, 'old', 1); PRAGMA user_version = 1;");
    EXPECT_EQ(SqliteStorage(file).registerDevice("old", sha256("t")), 5);
    EXPECT_EQ(SqliteStorage(file).referralCode(5, "CODE"), "CODE");
    run("PRAGMA user_version = 99;");
    EXPECT_THROW(SqliteStorage{file}, StorageError);
}

TEST(SqliteStorage, NothingStaysOfStrangersWhoHaveTheirWholeAllowanceAgain) {
    const TemporaryFolder folder;
    const auto file = folder / "x.sqlite";
    auto now = noon;
    SqliteStorage storage(file, [&] { return now; });
    const auto count = [&] {
        sqlite3* raw = nullptr;
        sqlite3_stmt* read = nullptr;
        sqlite3_open(file.c_str(), &raw);
        sqlite3_prepare_v2(raw, "SELECT count(*) FROM stranger", -1, &read, nullptr);
        EXPECT_EQ(sqlite3_step(read), SQLITE_ROW) << sqlite3_errmsg(raw);
        const auto rows = sqlite3_column_int(read, 0);
        sqlite3_finalize(read);
        sqlite3_close(raw);
        return rows;
    };
    for (int i = 0; i < 30; ++i)
        storage.admitStranger("register", sha256(std::to_string(i)), Rate{2, std::chrono::minutes(1)});
    EXPECT_EQ(count(), 30);
    now += std::chrono::minutes(2);
    storage.admitStranger("register", sha256("last"), Rate{2, std::chrono::minutes(1)});
    EXPECT_EQ(count(), 1);
}

TEST(SqliteStorage, AFileThatIsNoDatabaseIsAnError) {
    const TemporaryFolder folder;
    std::ofstream(folder / "x.sqlite") << std::string(4096, 'x');
    EXPECT_THROW(SqliteStorage(folder / "x.sqlite"), StorageError);
    EXPECT_THROW(SqliteStorage(folder / "absent/x.sqlite"), StorageError);
}
