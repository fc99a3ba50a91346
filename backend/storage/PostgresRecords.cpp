// SPDX-License-Identifier: GPL-3.0-or-later
// What is kept of people: who they are, their codes, limits and words.
#include "storage/PostgresStorage.h"

namespace lorvane::backend {

namespace {

constexpr std::int64_t joinLock = 0x6c6f7276616e6502;
constexpr std::int64_t takeKept = std::chrono::milliseconds(std::chrono::hours(1)).count();
constexpr const char* noSuchDevice = "no such device";

// A table of one row with the time; every statement looks at the clock once.
const std::string clock =
    "WITH clock AS (SELECT (extract(epoch FROM clock_timestamp()) * 1000)::bigint AS now)";

std::int64_t personOn(PostgresLink& link, DeviceId device) {
    const auto rows =
        link.run("SELECT coalesce(person, id) FROM device WHERE id = $1", PostgresValues().number(device));
    if (rows.empty())
        throw StorageError(noSuchDevice);
    return rows.number(0, 0);
}

// Marks the take $2 of the device $1 for the purpose $3; `mark` has no row when it was marked within the hour
// ($4) before. What is older goes a little at a time, and never what another backend is removing.
const std::string markTake =
    clock + ", old AS (SELECT seen_take.ctid AS place FROM seen_take, clock WHERE at < now - $4::bigint"
            "   AND (device, take, purpose) <> ($1, $2, $3) LIMIT 100 FOR UPDATE OF seen_take SKIP LOCKED),"
            " gone AS (DELETE FROM seen_take WHERE ctid IN (SELECT place FROM old)),"
            " mark AS (INSERT INTO seen_take AS s (device, take, purpose, at)"
            " SELECT $1, $2, $3, now FROM clock ON CONFLICT (device, take, purpose) DO UPDATE"
            " SET at = excluded.at WHERE s.at < excluded.at - $4::bigint RETURNING at)";

PostgresValues takeValues(DeviceId device, const Digest& take, std::string_view purpose) {
    PostgresValues values;
    values.number(device).bytes(asBytes(take)).text(purpose).number(takeKept);
    return values;
}

// The row holds when the allowance will be full again; a row in the past is the same as none. One statement,
// so that backends that ask at once are counted one after the other.
std::chrono::milliseconds admitOn(PostgresLink& link, const std::string& table, std::string_view bucket,
                                  std::int64_t key, const Rate& rate) {
    if (rate.burst <= 0)
        return std::chrono::milliseconds(0);
    const auto interval = rate.interval.count();
    // Further away than a whole allowance it is by a clock that was set back since.
    const std::string full = "(SELECT CASE WHEN a.full_at > now + $4::bigint THEN now"
                             " ELSE greatest(a.full_at, now) END FROM clock)";
    const auto taken =
        link.run(clock + " INSERT INTO " + table +
                     " AS a (bucket, key, full_at)"
                     " SELECT $1, $2::bigint, now + $3::bigint FROM clock"
                     " ON CONFLICT(bucket, key) DO UPDATE SET full_at = " +
                     full + " + $3::bigint WHERE " + full +
                     " + $3::bigint <= (SELECT now FROM clock) + $4::bigint RETURNING full_at",
                 PostgresValues().text(bucket).number(key).number(interval).number(interval * rate.burst));
    if (!taken.empty())
        return std::chrono::milliseconds(0);
    const auto late =
        link.run(clock + " SELECT " + full + " + $3::bigint - $4::bigint - now FROM " + table +
                     " a, clock WHERE bucket = $1 AND key = $2",
                 PostgresValues().text(bucket).number(key).number(interval).number(interval * rate.burst));
    return std::chrono::milliseconds(late.empty() ? 1 : std::max<std::int64_t>(1, late.number(0, 0)));
}

} // namespace

std::int64_t PostgresStorage::today() {
    return run(clock + " SELECT now / 86400000 FROM clock").number(0, 0);
}

std::int64_t PostgresStorage::personOf(DeviceId device) { return personOn(*link(), device); }

Joined PostgresStorage::joinDevices(DeviceId device, const Digest& alias) {
    auto connection = link();
    PostgresTransaction transaction(*connection);
    // Two joins at once could each miss whom the other has joined. They are rare.
    connection->run("SELECT pg_advisory_xact_lock($1)", PostgresValues().number(joinLock));
    const auto rows =
        connection->run("SELECT device FROM token WHERE hash = $1", PostgresValues().bytes(asBytes(alias)));
    if (rows.empty())
        return Joined::unknownAlias;
    const auto other = personOn(*connection, rows.number(0, 0));
    const auto own = personOn(*connection, device);
    if (own == other)
        return Joined::already;
    connection->run("UPDATE device SET person = $1 WHERE coalesce(person, id) = $2",
                    PostgresValues().number(std::min(own, other)).number(std::max(own, other)));
    transaction.commit();
    return Joined::yes;
}

std::optional<std::string> PostgresStorage::referralCode(DeviceId device, std::string_view fresh) {
    auto connection = link();
    const auto known =
        connection->run("SELECT code FROM referral JOIN device ON device.id = referral.device "
                        "WHERE coalesce(device.person, device.id) = $1 ORDER BY referral.id LIMIT 1",
                        PostgresValues().number(personOn(*connection, device)));
    if (!known.empty())
        return known.bytes(0, 0);
    const auto added = connection->run(
        "INSERT INTO referral(code, device) VALUES ($1, $2) ON CONFLICT DO NOTHING RETURNING code",
        PostgresValues().text(fresh).number(device));
    return added.empty() ? std::nullopt : std::optional(added.bytes(0, 0));
}

void PostgresStorage::keepOnboarded(DeviceId device, std::string_view source) {
    run("INSERT INTO onboarded(device, source) VALUES ($1, $2) "
        "ON CONFLICT(device) DO UPDATE SET source = excluded.source WHERE onboarded.source = ''",
        PostgresValues().number(device).text(source));
}

std::optional<std::string> PostgresStorage::onboardedSource(DeviceId device) {
    const auto rows = run("SELECT source FROM onboarded WHERE device = $1", PostgresValues().number(device));
    return rows.empty() ? std::nullopt : std::optional(rows.bytes(0, 0));
}

std::chrono::milliseconds PostgresStorage::admit(std::string_view bucket, std::int64_t key,
                                                 const Rate& rate) {
    return admitOn(*link(), "allowance", bucket, key, rate);
}

// What is in the past goes a little at a time, and never what another backend is removing.
std::chrono::milliseconds PostgresStorage::admitStranger(std::string_view bucket, const Digest& who,
                                                         const Rate& rate) {
    auto connection = link();
    connection->run(clock + ", old AS (SELECT stranger.ctid AS place FROM stranger, clock WHERE full_at < now"
                            " LIMIT 100 FOR UPDATE OF stranger SKIP LOCKED)"
                            " DELETE FROM stranger WHERE ctid IN (SELECT place FROM old)");
    return admitOn(*connection, "stranger", bucket, numberOf(who), rate);
}

bool PostgresStorage::admitTake(std::string_view bucket, DeviceId device, const TakeId& take,
                                const Rate& rate) {
    auto connection = link();
    // Who comes with the same take at once waits at its row for how this ends.
    PostgresTransaction transaction(*connection);
    if (take && connection->run(markTake + " SELECT at FROM mark", takeValues(device, *take, bucket)).empty())
        return true;
    if (admitOn(*connection, "allowance", bucket, personOn(*connection, device), rate).count() > 0)
        return false;
    transaction.commit();
    return true;
}

// One statement, so that a take is marked and counted, or neither.
void PostgresStorage::addPhoneWords(DeviceId device, const TakeId& take, std::int64_t words) {
    const std::string add = " INSERT INTO phone_words AS p (device, day, words)"
                            " SELECT $1::bigint, now / 86400000, ";
    const std::string onTop = " ON CONFLICT(device, day) DO UPDATE SET words = p.words + excluded.words";
    if (take)
        run(markTake + add + "$5::bigint FROM clock, mark" + onTop,
            takeValues(device, *take, "words").number(words));
    else
        run(clock + add + "$2::bigint FROM clock" + onTop, PostgresValues().number(device).number(words));
}

std::vector<DayWords> PostgresStorage::phoneWords(DeviceId device) {
    auto connection = link();
    const auto rows = connection->run(
        "SELECT day, sum(words)::bigint FROM phone_words JOIN device ON device.id = phone_words.device "
        "WHERE coalesce(device.person, device.id) = $1 GROUP BY day ORDER BY day DESC",
        PostgresValues().number(personOn(*connection, device)));
    std::vector<DayWords> days;
    for (int row = 0; row < rows.count(); ++row)
        days.push_back({rows.number(row, 0), rows.number(row, 1)});
    return days;
}

} // namespace lorvane::backend
