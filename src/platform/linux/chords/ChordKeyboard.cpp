// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/chords/ChordKeyboard.h"

namespace lorvane {

namespace {

constexpr Duration keyTime = std::chrono::milliseconds(15);
/// How long the compositor may take to deliver a key.
constexpr Duration delivery = std::chrono::milliseconds(500);
constexpr Duration deliveryPeriod = std::chrono::milliseconds(5);
/// How long a key that was posted may take to come past a watch of keys.
constexpr Duration echo = std::chrono::milliseconds(200);
constexpr Duration patience = std::chrono::milliseconds(500);
constexpr Duration pollPeriod = std::chrono::milliseconds(10);

/// Ends the session, which lets go of all its keys, unless the chord came to its end.
class ChordGuard {
 public:
    ChordGuard(ChordKeyboard& keyboard, int& posting) : keyboard_(keyboard), posting_(posting) { ++posting_; }
    ChordGuard(const ChordGuard&) = delete;
    ChordGuard& operator=(const ChordGuard&) = delete;
    ~ChordGuard() {
        --posting_;
        if (!isComplete) {
            keyboard_.close();
        }
    }
    bool isComplete = false;

 private:
    ChordKeyboard& keyboard_;
    int& posting_;
};

} // namespace

ChordKeyboard::ChordKeyboard(Clock& clock) : clock_(clock), lastPosted_(clock.now() - echo) {}

bool ChordKeyboard::isPosting() const { return posting_ > 0 || clock_.now() - lastPosted_ < echo; }

QCoro::Task<KeysOutcome> ChordKeyboard::chord(std::vector<int> inputCodes, std::function<bool()> hasEffect,
                                              TaskScope scope) {
    ChordGuard guard(*this, posting_);
    const bool isOpen = co_await open(scope);
    KeysOutcome outcome = KeysOutcome::notPosted;
    if (isOpen) {
        outcome = co_await press(inputCodes, scope);
    }
    bool isDone = outcome == KeysOutcome::posted;
    for (auto key = inputCodes.rbegin(); isDone && key != inputCodes.rend(); ++key) {
        const KeysOutcome released = co_await move(*key, false, scope);
        isDone = released == KeysOutcome::posted;
        if (isDone && key == inputCodes.rbegin()) {
            co_await awaitDelivery(hasEffect, scope);
        }
    }
    guard.isComplete = isDone;
    lastPosted_ = clock_.now();
    co_return outcome;
}

QCoro::Task<void> ChordKeyboard::awaitDelivery(std::function<bool()> hasEffect, TaskScope scope) {
    const Instant deadline = clock_.now() + delivery;
    while (!hasEffect() && clock_.now() < deadline) {
        co_await sleep(clock_, deliveryPeriod, scope);
    }
}

QCoro::Task<KeysOutcome> ChordKeyboard::press(std::vector<int> inputCodes, TaskScope scope) {
    KeysOutcome outcome = KeysOutcome::notPosted;
    for (const int key : inputCodes) {
        outcome = co_await move(key, true, scope);
        if (outcome != KeysOutcome::posted) {
            // Those before the last one do nothing by themselves.
            co_return key == inputCodes.back() ? outcome : KeysOutcome::notPosted;
        }
        co_await sleep(clock_, keyTime, scope);
    }
    co_return outcome;
}

QCoro::Task<bool> awaitBareKeyboard(ChordFacts facts, Clock& clock, TaskScope scope) {
    const Instant deadline = clock.now() + patience;
    while (facts.heldModifiers() != 0 && clock.now() < deadline) {
        co_await sleep(clock, pollPeriod, scope);
    }
    co_return facts.heldModifiers() == 0;
}

} // namespace lorvane
