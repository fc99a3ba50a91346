// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/Secrets.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

using DeviceId = std::int64_t;

// So many at once, and after that one in each `interval`.
struct Rate {
    int burst = 0; // 0: no limit
    std::chrono::milliseconds interval{0};

    static constexpr Rate perHour(int count) {
        return {count, count > 0 ? std::chrono::milliseconds(std::chrono::hours(1)) / count
                                 : std::chrono::milliseconds(0)};
    }
};

struct DayWords {
    std::int64_t day = 0; // since 1970-01-01, UTC
    std::int64_t words = 0;
};

// Which take it is: its content counts, see identityOfTake(). Nothing for one that cannot be told from
// others.
using TakeId = std::optional<Digest>;

enum class Joined { yes, already, unknownAlias };

// What outlives the process. Every operation may be called from any thread and throws StorageError when the
// store cannot do it.
class Storage {
 public:
    virtual ~Storage() = default;

    // Adds the token to the device, which is made on first use. Tokens of earlier registrations stay good,
    // the newest `tokensPerDevice` of them.
    virtual DeviceId registerDevice(std::string_view device, const Digest& token) = 0;
    virtual std::optional<DeviceId> deviceOfToken(const Digest& token) = 0;

    // What an engine has learnt about the voice and microphone of a device; the bytes are the engine's own.
    virtual std::optional<std::string> adaptation(DeviceId device, std::string_view engine) = 0;
    virtual void keepAdaptation(DeviceId device, std::string_view engine, std::string_view bytes) = 0;

    // From now on the device and the one that the other token belongs to are the same person.
    virtual Joined joinDevices(DeviceId device, const Digest& alias) = 0;

    // The code of the person, `fresh` when there is none yet; nothing when `fresh` is somebody else's
    // already. A person joined of two keeps both codes, and this is the elder.
    virtual std::optional<std::string> referralCode(DeviceId device, std::string_view fresh) = 0;

    // The first source that is not empty stays.
    virtual void keepOnboarded(DeviceId device, std::string_view source) = 0;
    virtual std::optional<std::string> onboardedSource(DeviceId device) = 0;

    // Takes one from what is left to `key` in `bucket`, and returns no time; or the time to wait when nothing
    // is left.
    virtual std::chrono::milliseconds admit(std::string_view bucket, std::int64_t key, const Rate& rate) = 0;
    // As admit(), for one of whom nothing is known but a digest. Nothing is kept of who has a whole allowance
    // again, but for a short while.
    virtual std::chrono::milliseconds admitStranger(std::string_view bucket, const Digest& who,
                                                    const Rate& rate) = 0;
    virtual std::int64_t personOf(DeviceId device) = 0;

    // As admit() for the person of the device; but a take that was let in within the hour is let in again for
    // nothing, as the upload after a broken stream is. False: nothing is left.
    virtual bool admitTake(std::string_view bucket, DeviceId device, const TakeId& take,
                           const Rate& rate) = 0;

    // Words dictated on a telephone by the person of the device, by day; the newest day first. Those of a
    // take that was added within the hour are not added again.
    virtual void addPhoneWords(DeviceId device, const TakeId& take, std::int64_t words) = 0;
    virtual std::vector<DayWords> phoneWords(DeviceId device) = 0;
    virtual std::int64_t today() = 0; // by the store's clock, as in DayWords

    static constexpr int tokensPerDevice = 8;
};

} // namespace lorvane::backend
