// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

namespace lorvane::backend {

class PostgresLink;

// Takes the tables to the newest version. Several programs may do so at once: one of them does, the others
// wait for it. Throws StorageError when the database is of a version that this program does not know,
// StorageAway.
void migratePostgres(PostgresLink& link, std::chrono::milliseconds timeout);

} // namespace lorvane::backend
