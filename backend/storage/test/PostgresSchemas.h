// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/PostgresLink.h"
#include "storage/PostgresStorage.h"
#include "testing/PostgresServer.h"

#include <chrono>
#include <string>

// Stores in a real PostgreSQL, each in a schema of its own.
namespace lorvane::backend::testing {

inline PostgresOptions optionsFor(PostgresServer& server, const std::string& schema) {
    PostgresOptions options;
    options.address = server.address(schema);
    options.passwordFile = server.passwordFile();
    options.timeout = std::chrono::seconds(20); // the machine may have much else to do
    return options;
}

inline PostgresLink linkTo(const PostgresOptions& options) {
    NameLookup names;
    return PostgresLink(options, names);
}

inline std::string freshSchema() {
    static int number = 0;
    return "world" + std::to_string(++number);
}

// What an operation comes to: "done", "away" or "refused".
template <class Operation>
std::string outcome(Operation operation) {
    try {
        operation();
        return "done";
    } catch (const StorageAway&) {
        return "away";
    } catch (const StorageError& error) {
        return std::string("refused: ") + error.what();
    }
}

} // namespace lorvane::backend::testing
