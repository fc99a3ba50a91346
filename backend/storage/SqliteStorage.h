// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/Storage.h"

#include <filesystem>
#include <memory>
#include <mutex>

struct sqlite3;
struct sqlite3_stmt;

namespace lorvane::backend {

// One SQLite database in write-ahead mode, one connection, one statement at a time.
class SqliteStorage : public Storage {
 public:
    // Makes the file (readable by its owner only) and its tables when missing; the folder must exist.
    // Throws StorageError.
    explicit SqliteStorage(const std::filesystem::path& file);
    ~SqliteStorage() override;

    DeviceId registerDevice(std::string_view device, const Digest& token) override;
    std::optional<DeviceId> deviceOfToken(const Digest& token) override;
    std::optional<std::string> adaptation(DeviceId device, std::string_view engine) override;
    void keepAdaptation(DeviceId device, std::string_view engine, std::string_view bytes) override;

 private:
    void execute(const char* sql);
    void migrate();
    DeviceId deviceRow(std::string_view device);

    std::mutex mutex_;
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_;
};

} // namespace lorvane::backend
