// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/Storage.h"
#include "storage/StorageError.h"

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <tuple>

namespace lorvane::backend::testing {

// Keeps everything as long as it lives; can be made to be away.
class MemoryStorage : public Storage {
 public:
    using Now = std::function<std::chrono::system_clock::time_point()>;
    explicit MemoryStorage(Now now = &std::chrono::system_clock::now) : now_(std::move(now)) {}

    // Every operation then throws StorageAway.
    void setAway(bool away) { away_ = away; }
    int lookUps() const { return lookUps_; } // of tokens

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
    using TakeKey = std::tuple<DeviceId, Digest, std::string>;
    std::unique_lock<std::mutex> enter();
    std::int64_t person(DeviceId device) const;
    std::chrono::milliseconds admitLocked(std::string_view bucket, std::int64_t key, const Rate& rate);
    bool seen(DeviceId device, const TakeId& take, std::string_view purpose) const;
    void mark(DeviceId device, const TakeId& take, std::string_view purpose);
    std::int64_t milliseconds() const;

    const Now now_;
    std::atomic<bool> away_ = false;
    std::atomic<int> lookUps_ = 0;
    std::mutex mutex_;
    std::map<std::string, DeviceId, std::less<>> devices_;
    std::map<DeviceId, std::int64_t> persons_;
    std::vector<std::pair<Digest, DeviceId>> tokens_; // the newest last
    std::map<std::pair<DeviceId, std::string>, std::string> adaptations_;
    std::vector<std::pair<std::string, DeviceId>> codes_; // the eldest first
    std::map<DeviceId, std::string> onboarded_;
    std::map<std::pair<std::string, std::int64_t>, std::int64_t> fullAt_;
    std::map<TakeKey, std::int64_t> seen_;
    std::map<std::pair<DeviceId, std::int64_t>, std::int64_t> words_; // by device and day
};

} // namespace lorvane::backend::testing
