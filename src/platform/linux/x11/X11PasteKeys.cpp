// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11PasteKeys.h"

#include <functional>

namespace lorvane {

namespace {

constexpr Duration patience = std::chrono::milliseconds(500);
constexpr Duration pollPeriod = std::chrono::milliseconds(10);
constexpr Duration keyTime = std::chrono::milliseconds(30);

/// Lets go of what it pressed, whatever ends the wait in between.
class PressedChord {
 public:
    PressedChord(Chord chord, const std::function<void(XKeyCode, bool)>& fakeKey)
        : chord_(std::move(chord)), fakeKey_(fakeKey) {
        for (const XKeyCode key : chord_) {
            fakeKey_(key, true);
        }
    }
    PressedChord(const PressedChord&) = delete;
    PressedChord& operator=(const PressedChord&) = delete;
    ~PressedChord() {
        for (auto key = chord_.rbegin(); key != chord_.rend(); ++key) {
            fakeKey_(*key, false);
        }
    }

 private:
    Chord chord_;
    std::function<void(XKeyCode, bool)> fakeKey_;
};

} // namespace

QCoro::Task<KeysOutcome> X11PasteKeys::post(Aim aim, TaskScope scope) {
    if (!keyboard_.canPost()) {
        co_return KeysOutcome::notPosted;
    }
    const Instant deadline = clock_.now() + patience;
    std::vector<XKeyCode> held = heldModifiers();
    while (!held.empty() && clock_.now() < deadline) {
        co_await sleep(clock_, pollPeriod, scope);
        held = heldModifiers();
    }
    const Chord chord = chordFor(aim());
    if (chord.empty()) {
        co_return KeysOutcome::notPosted;
    }
    keyboard_.lift(held);
    const std::function<void(XKeyCode, bool)> fake = [this](XKeyCode key, bool press) {
        fakeKey(key, press);
    };
    {
        const PressedChord pressed(chord, fake);
        co_await sleep(clock_, keyTime, scope);
    }
    co_return connection_.isAlive() ? KeysOutcome::posted : KeysOutcome::unknown;
}

std::vector<XKeyCode> X11PasteKeys::heldModifiers() {
    const auto moment = keyboard_.moment();
    return moment ? moment->heldModifiers : std::vector<XKeyCode>();
}

Chord X11PasteKeys::chordFor(PasteRoute route) {
    const auto moment = keyboard_.moment();
    return moment ? pasteChord(keyboard_.keymap(), moment->group, route) : Chord();
}

void X11PasteKeys::fakeKey(XKeyCode key, bool press) {
    keyboard_.fakeKey(key, press);
    connection_.flush();
}

} // namespace lorvane
