// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/SqliteStorage.h"
#include "storage/StorageError.h"
#include "testing/TemporaryFolder.h"

#include <atomic>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <thread>

using namespace lorvane::backend;
using lorvane::backend::testing::TemporaryFolder;

namespace {
constexpr const char* deviceA = "6F9619FF-8B86-D011-B42D-00C04FC964FF";
constexpr const char* deviceB = "00000000-0000-4000-8000-000000000001";
} // namespace

class SqliteStorageTest : public ::testing::Test {
 protected:
    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_ / "backend.sqlite";
    SqliteStorage storage_{file_};
};

TEST_F(SqliteStorageTest, ATokenLeadsToItsDevice) {
    const auto id = storage_.registerDevice(deviceA, sha256("one"));
    EXPECT_EQ(storage_.deviceOfToken(sha256("one")), id);
    EXPECT_FALSE(storage_.deviceOfToken(sha256("other")));
}

TEST_F(SqliteStorageTest, ASecondRegistrationIsTheSameDeviceAndTheFirstTokenStaysGood) {
    const auto first = storage_.registerDevice(deviceA, sha256("one"));
    EXPECT_EQ(storage_.registerDevice(deviceA, sha256("two")), first);
    EXPECT_NE(storage_.registerDevice(deviceB, sha256("three")), first);
    EXPECT_EQ(storage_.deviceOfToken(sha256("one")), first);
    EXPECT_EQ(storage_.deviceOfToken(sha256("two")), first);
}

TEST_F(SqliteStorageTest, OnlyTheNewestTokensOfADeviceStayGood) {
    const auto other = storage_.registerDevice(deviceB, sha256("b"));
    for (int i = 0; i < Storage::tokensPerDevice + 2; ++i)
        storage_.registerDevice(deviceA, sha256(std::to_string(i)));
    EXPECT_FALSE(storage_.deviceOfToken(sha256("0")));
    EXPECT_FALSE(storage_.deviceOfToken(sha256("1")));
    for (int i = 2; i < Storage::tokensPerDevice + 2; ++i)
        EXPECT_TRUE(storage_.deviceOfToken(sha256(std::to_string(i)))) << i;
    EXPECT_EQ(storage_.deviceOfToken(sha256("b")), other);
}

TEST_F(SqliteStorageTest, AdaptationIsKeptByDeviceAndEngine) {
    const auto a = storage_.registerDevice(deviceA, sha256("a"));
    const auto b = storage_.registerDevice(deviceB, sha256("b"));
    EXPECT_FALSE(storage_.adaptation(a, "engine"));
    const std::string bytes("\0\1\2\xff", 4);
    storage_.keepAdaptation(a, "engine", "old");
    storage_.keepAdaptation(a, "engine", bytes);
    EXPECT_EQ(storage_.adaptation(a, "engine"), bytes);
    EXPECT_FALSE(storage_.adaptation(b, "engine"));
    EXPECT_FALSE(storage_.adaptation(a, "another"));
}

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

TEST_F(SqliteStorageTest, ThreadsMayRegisterAndAskAtOnce) {
    std::vector<std::thread> threads;
    threads.reserve(4);
    std::atomic<int> found = 0;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; ++i) {
                const auto digest = sha256(std::to_string(t) + '/' + std::to_string(i));
                const auto id = storage_.registerDevice("device " + std::to_string(t * 50 + i), digest);
                found += storage_.deviceOfToken(digest) == id ? 1 : 0;
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(found, 200);
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

TEST(SqliteStorage, AFileThatIsNoDatabaseIsAnError) {
    const TemporaryFolder folder;
    std::ofstream(folder / "x.sqlite") << std::string(4096, 'x');
    EXPECT_THROW(SqliteStorage(folder / "x.sqlite"), StorageError);
    EXPECT_THROW(SqliteStorage(folder / "absent/x.sqlite"), StorageError);
}
