// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/MemoryStorage.h"

#include <algorithm>

namespace lorvane::backend::testing {

namespace {
constexpr std::int64_t hour = 3'600'000;
}

std::unique_lock<std::mutex> MemoryStorage::enter() {
    if (away_)
        throw StorageAway("the store is away");
    return std::unique_lock(mutex_);
}

std::int64_t MemoryStorage::milliseconds() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(now_().time_since_epoch()).count();
}

std::int64_t MemoryStorage::person(DeviceId device) const {
    const auto found = persons_.find(device);
    if (found == persons_.end())
        throw StorageError("no such device");
    return found->second;
}

DeviceId MemoryStorage::registerDevice(std::string_view device, const Digest& token) {
    const auto lock = enter();
    const auto fresh = static_cast<DeviceId>(devices_.size()) + 1;
    const auto id = devices_.try_emplace(std::string(device), fresh).first->second;
    persons_.try_emplace(id, id);
    tokens_.emplace_back(token, id);
    const auto own = [id](const auto& entry) { return entry.second == id; };
    if (std::count_if(tokens_.begin(), tokens_.end(), own) > tokensPerDevice)
        tokens_.erase(std::find_if(tokens_.begin(), tokens_.end(), own));
    return id;
}

std::optional<DeviceId> MemoryStorage::deviceOfToken(const Digest& token) {
    const auto lock = enter();
    ++lookUps_;
    for (const auto& [digest, device] : tokens_)
        if (digest == token)
            return device;
    return std::nullopt;
}

std::optional<std::string> MemoryStorage::adaptation(DeviceId device, std::string_view engine) {
    const auto lock = enter();
    const auto found = adaptations_.find({device, std::string(engine)});
    return found == adaptations_.end() ? std::nullopt : std::optional(found->second);
}

void MemoryStorage::keepAdaptation(DeviceId device, std::string_view engine, std::string_view bytes) {
    const auto lock = enter();
    person(device);
    adaptations_[{device, std::string(engine)}] = bytes;
}

Joined MemoryStorage::joinDevices(DeviceId device, const Digest& alias) {
    const auto other = deviceOfToken(alias);
    if (!other)
        return Joined::unknownAlias;
    const auto lock = enter();
    const auto [low, high] = std::minmax({person(device), person(*other)});
    if (low == high)
        return Joined::already;
    for (auto& entry : persons_)
        if (entry.second == high)
            entry.second = low;
    return Joined::yes;
}

std::optional<std::string> MemoryStorage::referralCode(DeviceId device, std::string_view fresh) {
    const auto lock = enter();
    const auto who = person(device);
    for (const auto& [code, owner] : codes_)
        if (person(owner) == who)
            return code;
    for (const auto& entry : codes_)
        if (entry.first == fresh)
            return std::nullopt;
    codes_.emplace_back(fresh, device);
    return std::string(fresh);
}

void MemoryStorage::keepOnboarded(DeviceId device, std::string_view source) {
    const auto lock = enter();
    person(device);
    auto& kept = onboarded_[device];
    if (kept.empty())
        kept = source;
}

std::optional<std::string> MemoryStorage::onboardedSource(DeviceId device) {
    const auto lock = enter();
    const auto found = onboarded_.find(device);
    return found == onboarded_.end() ? std::nullopt : std::optional(found->second);
}

std::chrono::milliseconds MemoryStorage::admit(std::string_view bucket, std::int64_t key, const Rate& rate) {
    const auto lock = enter();
    return admitLocked(bucket, key, rate);
}

std::chrono::milliseconds MemoryStorage::admitStranger(std::string_view bucket, const Digest& who,
                                                       const Rate& rate) {
    const auto lock = enter();
    return admitLocked("stranger " + std::string(bucket), numberOf(who), rate);
}

std::chrono::milliseconds MemoryStorage::admitLocked(std::string_view bucket, std::int64_t key,
                                                     const Rate& rate) {
    if (rate.burst <= 0)
        return std::chrono::milliseconds(0);
    const auto now = milliseconds();
    auto& fullAt = fullAt_[{std::string(bucket), key}];
    const auto whole = rate.interval.count() * rate.burst;
    const auto next = (fullAt > now + whole ? now : std::max(now, fullAt)) + rate.interval.count();
    if (const auto early = next - now - rate.interval.count() * rate.burst; early > 0)
        return std::chrono::milliseconds(early);
    fullAt = next;
    return std::chrono::milliseconds(0);
}

std::int64_t MemoryStorage::personOf(DeviceId device) {
    const auto lock = enter();
    return person(device);
}

bool MemoryStorage::seen(DeviceId device, const TakeId& take, std::string_view purpose) const {
    if (!take)
        return false;
    const auto found = seen_.find({device, *take, std::string(purpose)});
    return found != seen_.end() && found->second >= milliseconds() - hour;
}

void MemoryStorage::mark(DeviceId device, const TakeId& take, std::string_view purpose) {
    if (take)
        seen_[{device, *take, std::string(purpose)}] = milliseconds();
}

bool MemoryStorage::admitTake(std::string_view bucket, DeviceId device, const TakeId& take,
                              const Rate& rate) {
    const auto lock = enter();
    const auto who = person(device);
    if (seen(device, take, bucket))
        return true;
    if (admitLocked(bucket, who, rate).count() > 0)
        return false;
    mark(device, take, bucket);
    return true;
}

void MemoryStorage::addPhoneWords(DeviceId device, const TakeId& take, std::int64_t words) {
    const auto lock = enter();
    person(device);
    if (seen(device, take, "words"))
        return;
    mark(device, take, "words");
    words_[{device, milliseconds() / (24 * hour)}] += words;
}

std::vector<DayWords> MemoryStorage::phoneWords(DeviceId device) {
    const auto lock = enter();
    const auto who = person(device);
    std::map<std::int64_t, std::int64_t, std::greater<>> sums;
    for (const auto& [key, words] : words_)
        if (person(key.first) == who)
            sums[key.second] += words;
    std::vector<DayWords> days;
    for (const auto& [day, words] : sums)
        days.push_back({day, words});
    return days;
}

std::int64_t MemoryStorage::today() {
    const auto lock = enter();
    return milliseconds() / (24 * hour);
}

} // namespace lorvane::backend::testing
