// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/NameLookup.h"
#include "storage/StorageError.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct pg_conn;
struct pg_result;

namespace lorvane::backend {

struct PostgresHost;

struct PostgresOptions {
    std::string address;                     // postgresql://…, without a password
    std::filesystem::path passwordFile;      // its first line; empty: PGPASSWORD, ~/.pgpass, or none at all
    std::size_t connections = 8;             // at once
    std::chrono::milliseconds timeout{3000}; // to connect, for a statement, and for a free connection, each
    NameLookup::Resolve resolve = &NameLookup::askSystem; // of host names
};

// Why the address is none, without quoting it; empty when it is one.
std::string flawOfPostgresAddress(const std::string& address);

// The values of a statement's $1, $2, …
class PostgresValues {
 public:
    PostgresValues& number(std::int64_t value);
    PostgresValues& text(std::string_view value);
    PostgresValues& bytes(std::string_view value);

 private:
    friend class PostgresLink;
    std::vector<std::string> values_;
    std::vector<int> formats_;
};

class PostgresRows {
 public:
    explicit PostgresRows(pg_result* result) : result_(result, &PostgresRows::clear) {}
    int count() const;
    bool empty() const { return count() == 0; }
    std::int64_t number(int row, int column) const; // of a bigint
    std::string bytes(int row, int column) const;   // of a text or bytea

 private:
    static void clear(pg_result* result);
    std::shared_ptr<pg_result> result_;
};

// One connection to a PostgreSQL server; every wait on it is bounded. Used by one thread at a time.
class PostgresLink {
 public:
    // Connects. Throws StorageAway.
    PostgresLink(const PostgresOptions& options, NameLookup& names);
    ~PostgresLink();
    PostgresLink(const PostgresLink&) = delete;
    PostgresLink& operator=(const PostgresLink&) = delete;

    // Throws StorageAway when the server does not answer, after which the link is broken, and StorageError
    // when it refuses the statement.
    PostgresRows run(const std::string& sql, const PostgresValues& values = {});
    // For the statements to come.
    void setTimeout(std::chrono::milliseconds timeout);

    bool broken() const { return broken_; }
    // Nobody uses it any more, whatever state it is in.
    void giveUp() { broken_ = true; }
    // False when the server has said goodbye since the last statement.
    bool stillThere();

 private:
    using Time = std::chrono::steady_clock::time_point;
    void connect(const PostgresOptions& options, NameLookup& names);
    // Nothing when it is connected, else the reason why not.
    std::string connectToAny(const PostgresHost& host, const PostgresOptions& options,
                             const std::string& password, NameLookup& names, Time latest);
    std::string connectTo(const PostgresHost& host, const PostgresOptions& options,
                          const std::string& password, Time latest);
    bool ready(short events, Time latest);
    void await(short events, Time latest);
    PostgresRows answer(Time latest);
    [[noreturn]] void away(const std::string& reason);

    pg_conn* connection_ = nullptr;
    std::chrono::milliseconds timeout_;
    bool broken_ = false;
};

// Rolls back unless the work got as far as commit().
class PostgresTransaction {
 public:
    explicit PostgresTransaction(PostgresLink& link) : link_(link) { link_.run("BEGIN"); }
    ~PostgresTransaction();
    PostgresTransaction(const PostgresTransaction&) = delete;
    PostgresTransaction& operator=(const PostgresTransaction&) = delete;
    void commit() {
        link_.run("COMMIT");
        committed_ = true;
    }

 private:
    PostgresLink& link_;
    bool committed_ = false;
};

} // namespace lorvane::backend
