// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/StorageError.h"

#include <cstdint>
#include <sqlite3.h>
#include <string>
#include <string_view>

namespace lorvane::backend {

// A prepared statement with its bindings, finalised with its owner.
class Statement {
 public:
    Statement(sqlite3* database, std::string_view sql) : database_(database) {
        check(sqlite3_prepare_v2(database, sql.data(), static_cast<int>(sql.size()), &statement_, nullptr));
    }
    ~Statement() { sqlite3_finalize(statement_); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& bind(std::int64_t value) {
        check(sqlite3_bind_int64(statement_, ++bound_, value));
        return *this;
    }
    Statement& text(std::string_view value) {
        check(sqlite3_bind_text(statement_, ++bound_, value.data(), static_cast<int>(value.size()),
                                SQLITE_TRANSIENT));
        return *this;
    }
    Statement& blob(std::string_view value) {
        check(sqlite3_bind_blob64(statement_, ++bound_, value.data(), value.size(), SQLITE_TRANSIENT));
        return *this;
    }

    // True while there is a row to read.
    bool step() {
        const int result = sqlite3_step(statement_);
        if (result != SQLITE_ROW && result != SQLITE_DONE)
            check(result);
        return result == SQLITE_ROW;
    }
    std::int64_t integer(int column) { return sqlite3_column_int64(statement_, column); }
    std::string bytes(int column) {
        const auto* data = static_cast<const char*>(sqlite3_column_blob(statement_, column));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
        return data ? std::string(data, size) : std::string();
    }

 private:
    void check(int result) const {
        if (result != SQLITE_OK)
            throw StorageError(sqlite3_errmsg(database_));
    }

    sqlite3* database_;
    sqlite3_stmt* statement_ = nullptr;
    int bound_ = 0;
};

} // namespace lorvane::backend
