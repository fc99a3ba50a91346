// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/Storage.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>

struct sqlite3;
struct sqlite3_stmt;

namespace lorvane::backend {

// One SQLite database in write-ahead mode, one connection, one statement at a time.
class SqliteStorage : public Storage {
 public:
    using Now = std::function<std::chrono::system_clock::time_point()>;

    // Makes the file (readable by its owner only) and its tables when missing; the folder must exist.
    // Throws StorageError.
    explicit SqliteStorage(const std::filesystem::path& file, Now now = &std::chrono::system_clock::now);
    ~SqliteStorage() override;

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
    void execute(const char* sql);
    void migrate();
    DeviceId deviceRow(std::string_view device);
    std::int64_t personLocked(DeviceId device);
    std::chrono::milliseconds admitLocked(const std::string& table, std::string_view bucket, std::int64_t key,
                                          const Rate& rate);
    bool firstOfTake(DeviceId device, const Digest& take, std::string_view purpose);
    std::int64_t milliseconds() const; // since 1970

    const Now now_;
    std::mutex mutex_;
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_;
};

} // namespace lorvane::backend
