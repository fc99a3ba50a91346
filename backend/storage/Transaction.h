// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/Statement.h"

namespace lorvane::backend {

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

} // namespace lorvane::backend
