// SPDX-License-Identifier: GPL-3.0-or-later
// What is kept of people: who they are, their codes, limits and words.
#include "storage/SqliteStorage.h"
#include "storage/Statement.h"
#include "storage/Transaction.h"

#include <algorithm>

namespace lorvane::backend {

namespace {

constexpr std::chrono::milliseconds takeKept = std::chrono::hours(1);
constexpr std::chrono::milliseconds aDay = std::chrono::hours(24);

} // namespace

std::int64_t SqliteStorage::milliseconds() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(now_().time_since_epoch()).count();
}

std::int64_t SqliteStorage::today() { return milliseconds() / aDay.count(); }

std::int64_t SqliteStorage::personLocked(DeviceId device) {
    Statement read(database_.get(), "SELECT coalesce(person, id) FROM device WHERE id = ?");
    read.bind(device);
    if (!read.step())
        throw StorageError("no such device");
    return read.integer(0);
}

std::int64_t SqliteStorage::personOf(DeviceId device) {
    const std::lock_guard lock(mutex_);
    return personLocked(device);
}

Joined SqliteStorage::joinDevices(DeviceId device, const Digest& alias) {
    const std::lock_guard lock(mutex_);
    Transaction transaction(database_.get());
    std::int64_t other = 0;
    {
        Statement read(database_.get(), "SELECT device FROM token WHERE hash = ?");
        read.blob(asBytes(alias));
        if (!read.step())
            return Joined::unknownAlias;
        other = personLocked(read.integer(0));
    }
    const auto own = personLocked(device);
    if (own == other)
        return Joined::already;
    Statement(database_.get(), "UPDATE device SET person = ? WHERE coalesce(person, id) = ?")
        .bind(std::min(own, other))
        .bind(std::max(own, other))
        .step();
    transaction.commit();
    return Joined::yes;
}

std::optional<std::string> SqliteStorage::referralCode(DeviceId device, std::string_view fresh) {
    const std::lock_guard lock(mutex_);
    Transaction transaction(database_.get());
    {
        Statement read(database_.get(),
                       "SELECT code FROM referral JOIN device ON device.id = referral.device "
                       "WHERE coalesce(device.person, device.id) = ? ORDER BY referral.id LIMIT 1");
        read.bind(personLocked(device));
        if (read.step())
            return read.bytes(0);
    }
    Statement(database_.get(), "INSERT INTO referral(code, device) VALUES (?, ?) ON CONFLICT DO NOTHING")
        .text(fresh)
        .bind(device)
        .step();
    if (sqlite3_changes(database_.get()) == 0)
        return std::nullopt;
    transaction.commit();
    return std::string(fresh);
}

void SqliteStorage::keepOnboarded(DeviceId device, std::string_view source) {
    const std::lock_guard lock(mutex_);
    Statement(database_.get(), "INSERT INTO onboarded(device, source, at) VALUES (?, ?, ?) "
                               "ON CONFLICT(device) DO UPDATE SET source = excluded.source "
                               "WHERE onboarded.source = ''")
        .bind(device)
        .text(source)
        .bind(milliseconds())
        .step();
}

std::optional<std::string> SqliteStorage::onboardedSource(DeviceId device) {
    const std::lock_guard lock(mutex_);
    Statement read(database_.get(), "SELECT source FROM onboarded WHERE device = ?");
    read.bind(device);
    if (!read.step())
        return std::nullopt;
    return read.bytes(0);
}

std::chrono::milliseconds SqliteStorage::admit(std::string_view bucket, std::int64_t key, const Rate& rate) {
    const std::lock_guard lock(mutex_);
    Transaction transaction(database_.get());
    const auto wait = admitLocked("allowance", bucket, key, rate);
    transaction.commit();
    return wait;
}

std::chrono::milliseconds SqliteStorage::admitStranger(std::string_view bucket, const Digest& who,
                                                       const Rate& rate) {
    const std::lock_guard lock(mutex_);
    Transaction transaction(database_.get());
    Statement(database_.get(), "DELETE FROM stranger WHERE full_at < ?").bind(milliseconds()).step();
    const auto wait = admitLocked("stranger", bucket, numberOf(who), rate);
    transaction.commit();
    return wait;
}

// The row holds when the allowance will be full again; a row in the past is the same as none.
std::chrono::milliseconds SqliteStorage::admitLocked(const std::string& table, std::string_view bucket,
                                                     std::int64_t key, const Rate& rate) {
    if (rate.burst <= 0)
        return std::chrono::milliseconds(0);
    const auto interval = rate.interval.count();
    const auto now = milliseconds();
    auto full = now;
    {
        Statement read(database_.get(), "SELECT full_at FROM " + table + " WHERE bucket = ? AND key = ?");
        read.text(bucket).bind(key);
        if (read.step())
            full = std::max(now, read.integer(0));
    }
    // Further away than a whole allowance it is by a clock that was set back since.
    if (full > now + interval * rate.burst)
        full = now;
    const auto next = full + interval;
    if (const auto early = next - now - interval * rate.burst; early > 0)
        return std::chrono::milliseconds(early);
    Statement(database_.get(), "INSERT INTO " + table +
                                   "(bucket, key, full_at) VALUES (?, ?, ?) "
                                   "ON CONFLICT(bucket, key) DO UPDATE SET full_at = excluded.full_at")
        .text(bucket)
        .bind(key)
        .bind(next)
        .step();
    return std::chrono::milliseconds(0);
}

// Within the transaction of what hangs on it.
bool SqliteStorage::firstOfTake(DeviceId device, const Digest& take, std::string_view purpose) {
    Statement(database_.get(), "DELETE FROM seen_take WHERE at < ?")
        .bind(milliseconds() - takeKept.count())
        .step();
    Statement(database_.get(),
              "INSERT INTO seen_take(device, take, purpose, at) VALUES (?, ?, ?, ?) ON CONFLICT DO NOTHING")
        .bind(device)
        .blob(asBytes(take))
        .text(purpose)
        .bind(milliseconds())
        .step();
    return sqlite3_changes(database_.get()) == 1;
}

bool SqliteStorage::admitTake(std::string_view bucket, DeviceId device, const TakeId& take,
                              const Rate& rate) {
    const std::lock_guard lock(mutex_);
    Transaction transaction(database_.get());
    const bool again = take && !firstOfTake(device, *take, bucket);
    if (!again && admitLocked("allowance", bucket, personLocked(device), rate).count() > 0)
        return false;
    transaction.commit();
    return true;
}

void SqliteStorage::addPhoneWords(DeviceId device, const TakeId& take, std::int64_t words) {
    const std::lock_guard lock(mutex_);
    Transaction transaction(database_.get());
    if (take && !firstOfTake(device, *take, "words"))
        return;
    Statement(database_.get(), "INSERT INTO phone_words(device, day, words) VALUES (?, ?, ?) "
                               "ON CONFLICT(device, day) DO UPDATE SET words = words + excluded.words")
        .bind(device)
        .bind(today())
        .bind(words)
        .step();
    transaction.commit();
}

std::vector<DayWords> SqliteStorage::phoneWords(DeviceId device) {
    const std::lock_guard lock(mutex_);
    Statement read(database_.get(),
                   "SELECT day, sum(words) FROM phone_words JOIN device ON device.id = phone_words.device "
                   "WHERE coalesce(device.person, device.id) = ? GROUP BY day ORDER BY day DESC");
    read.bind(personLocked(device));
    std::vector<DayWords> days;
    while (read.step())
        days.push_back({read.integer(0), read.integer(1)});
    return days;
}

} // namespace lorvane::backend
