// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/PostgresStorage.h"

#include "storage/PostgresSchema.h"
#include "util/Log.h"

namespace lorvane::backend {

PostgresStorage::PostgresStorage(PostgresOptions options)
    : timeout_(options.timeout), pool_(std::move(options)) {
    try {
        link();
    } catch (const StorageAway& error) {
        logLine(error.what());
    }
}

PostgresPool::Lease PostgresStorage::link() {
    auto link = pool_.lease();
    if (!migrated_) {
        migratePostgres(*link, timeout_);
        migrated_ = true;
    }
    return link;
}

PostgresRows PostgresStorage::run(const std::string& sql, const PostgresValues& values) {
    return link()->run(sql, values);
}

DeviceId PostgresStorage::registerDevice(std::string_view device, const Digest& token) {
    auto connection = link();
    PostgresTransaction transaction(*connection);
    // The row stays locked until the end, so that registrations of one device come one after the other.
    const auto id = connection
                        ->run("INSERT INTO device(device) VALUES ($1) "
                              "ON CONFLICT(device) DO UPDATE SET device = excluded.device RETURNING id",
                              PostgresValues().text(device))
                        .number(0, 0);
    // A running number a device, since times can tie.
    connection->run("INSERT INTO token(hash, device, sequence) VALUES ($1, $2, "
                    "(SELECT coalesce(max(sequence), 0) + 1 FROM token WHERE device = $2))",
                    PostgresValues().bytes(asBytes(token)).number(id));
    connection->run("DELETE FROM token WHERE device = $1 AND hash NOT IN "
                    "(SELECT hash FROM token WHERE device = $1 ORDER BY sequence DESC LIMIT $2)",
                    PostgresValues().number(id).number(tokensPerDevice));
    transaction.commit();
    return id;
}

std::optional<DeviceId> PostgresStorage::deviceOfToken(const Digest& token) {
    const auto rows = run("SELECT device FROM token WHERE hash = $1", PostgresValues().bytes(asBytes(token)));
    return rows.empty() ? std::nullopt : std::optional(rows.number(0, 0));
}

std::optional<std::string> PostgresStorage::adaptation(DeviceId device, std::string_view engine) {
    const auto rows = run("SELECT bytes FROM adaptation WHERE device = $1 AND engine = $2",
                          PostgresValues().number(device).text(engine));
    return rows.empty() ? std::nullopt : std::optional(rows.bytes(0, 0));
}

void PostgresStorage::keepAdaptation(DeviceId device, std::string_view engine, std::string_view bytes) {
    run("INSERT INTO adaptation(device, engine, bytes) VALUES ($1, $2, $3) "
        "ON CONFLICT(device, engine) DO UPDATE SET bytes = excluded.bytes",
        PostgresValues().number(device).text(engine).bytes(bytes));
}

} // namespace lorvane::backend
