// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/PostgresPool.h"
#include "storage/Storage.h"

#include <atomic>

namespace lorvane::backend {

// A PostgreSQL database that several backends share. Times are those of the database's own clock. What a
// crash of the database may lose: allowances (limits begin anew), and nothing else.
class PostgresStorage : public Storage {
 public:
    // Brings the tables up to date. A database that is away is no error: it is looked for with each use.
    // Throws StorageError when it is there and unfit.
    explicit PostgresStorage(PostgresOptions options);

    DeviceId registerDevice(std::string_view device, const Digest& token) override;
    std::optional<DeviceId> deviceOfToken(const Digest& token) override;
    std::optional<std::string> adaptation(DeviceId device, std::string_view engine) override;
    void keepAdaptation(DeviceId device, std::string_view engine, std::string_view bytes) override;
    Joined joinDevices(DeviceId device, const Digest& alias) override;
    std::optional<std::string> referralCode(DeviceId device, std::string_view fresh) override;
    void keepOnboarded(DeviceId device, std::string_view source) override;
    std::optional<std::string> onboardedSource(DeviceId device) override;
    std::chrono::milliseconds admit(std::string_view bucket, std::int64_t key, const Rate& rate) override;
    std::chrono::milliseconds admitStranger(std::string_view bucket, const Digest& who,
                                            const Rate& rate) override;
    std::int64_t personOf(DeviceId device) override;
    bool admitTake(std::string_view bucket, DeviceId device, const TakeId& take, const Rate& rate) override;
    void addPhoneWords(DeviceId device, const TakeId& take, std::int64_t words) override;
    std::vector<DayWords> phoneWords(DeviceId device) override;
    std::int64_t today() override;

 private:
    // A connection to a database with the tables of today.
    PostgresPool::Lease link();
    PostgresRows run(const std::string& sql, const PostgresValues& values = {});

    const std::chrono::milliseconds timeout_;
    PostgresPool pool_;
    std::atomic<bool> migrated_ = false;
};

} // namespace lorvane::backend
