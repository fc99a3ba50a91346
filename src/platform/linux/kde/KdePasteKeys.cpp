// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/KdePasteKeys.h"

#include <algorithm>

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

constexpr Duration patience = std::chrono::milliseconds(500);
constexpr Duration pollPeriod = std::chrono::milliseconds(10);
constexpr Duration keyTime = std::chrono::milliseconds(30);

/// Lets go of what it pressed, whatever ends the wait in between.
class PressedKeys {
 public:
    PressedKeys(FakeInput& input, std::vector<std::uint32_t> keys) : input_(input), keys_(std::move(keys)) {
        for (const std::uint32_t key : keys_) {
            input_.key(key, true);
        }
        input_.flush();
    }
    PressedKeys(const PressedKeys&) = delete;
    PressedKeys& operator=(const PressedKeys&) = delete;
    ~PressedKeys() {
        for (auto key = keys_.rbegin(); key != keys_.rend(); ++key) {
            input_.key(*key, false);
        }
        input_.flush();
    }

 private:
    FakeInput& input_;
    std::vector<std::uint32_t> keys_;
};

} // namespace

/// In a terminal Insert does, and it is taken where the layout has no v.
bool KdePasteKeys::readsPrimary(PasteRoute route) {
    const std::vector<std::uint32_t> chord = keyboard_.pasteChord(route);
    return route != PasteRoute::standard && std::find(chord.begin(), chord.end(), KEY_INSERT) != chord.end();
}

QCoro::Task<KeysOutcome> KdePasteKeys::post(Aim aim, TaskScope scope) {
    const Instant deadline = clock_.now() + patience;
    while (keyboard_.heldModifiers() != 0 && clock_.now() < deadline) {
        co_await sleep(clock_, pollPeriod, scope);
    }
    if (!input_.isThere()) {
        co_return KeysOutcome::notPosted;
    }
    const std::vector<std::uint32_t> chord = keyboard_.pasteChord(aim());
    if (chord.empty()) {
        co_return KeysOutcome::notPosted;
    }
    input_.liftModifiers();
    {
        const PressedKeys pressed(input_, chord);
        co_await sleep(clock_, keyTime, scope);
    }
    co_return input_.isThere() ? KeysOutcome::posted : KeysOutcome::unknown;
}

} // namespace lorvane
