// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11PasteKeys.h"

#include <functional>

namespace lorvane {

namespace {

constexpr Duration patience = std::chrono::milliseconds(500);
constexpr Duration pollPeriod = std::chrono::milliseconds(10);
constexpr Duration keyTime = std::chrono::milliseconds(30);
/// A borrowed key, from the change to the keys: the application reads its map in between.
constexpr Duration settleTime = std::chrono::milliseconds(20);
/// Longer than all that is waited for between the loan and the keys.
constexpr Duration beforeKeys = std::chrono::seconds(3);
/// An application that is busy for longer finds no symbol on the key, and pastes nothing.
constexpr Duration afterKeys = std::chrono::seconds(1);

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
    if (!layout_.keyboard().canPost()) {
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
    if (const Duration time = untilKnown(); time > Duration::zero()) {
        co_await sleep(clock_, time, scope);
    }
    layout_.keyboard().lift(held);
    const std::function<void(XKeyCode, bool)> fake = [this](XKeyCode key, bool press) {
        fakeKey(key, press);
    };
    {
        const PressedChord pressed(chord, fake);
        co_await sleep(clock_, keyTime, scope);
    }
    if (borrowed_) {
        keepFor(afterKeys, *borrowed_);
    }
    co_return connection_.isAlive() ? KeysOutcome::posted : KeysOutcome::unknown;
}

std::vector<XKeyCode> X11PasteKeys::heldModifiers() {
    const auto moment = layout_.keyboard().moment();
    return moment ? moment->heldModifiers : std::vector<XKeyCode>();
}

bool X11PasteKeys::readsPrimary(PasteRoute route) {
    if (route != PasteRoute::terminal) {
        return PasteKeys::readsPrimary(route);
    }
    const auto moment = layout_.refresh() ? layout_.keyboard().moment() : std::nullopt;
    return moment && !keyOfV(route, *moment);
}

Chord X11PasteKeys::chordFor(PasteRoute route) {
    const auto moment = layout_.refresh() ? layout_.keyboard().moment() : std::nullopt;
    return moment ? pasteChord(layout_.keyboard().keymap(), route, keyOfV(route, *moment)) : Chord();
}

std::optional<XKeyCode> X11PasteKeys::keyOfV(PasteRoute route, const KeyboardMoment& moment) {
    const auto v = letterV(layout_.keyboard().keymap(), moment.group, layout_.borrowed().keys().all());
    return v || route != PasteRoute::terminal ? v : borrowV(moment);
}

std::optional<XKeyCode> X11PasteKeys::borrowV(const KeyboardMoment& moment) {
    if (!borrowed_) {
        BorrowedKeys& keys = layout_.borrowed();
        const std::vector<XKeyCode> spare = keys.keys().choose(1, moment.down);
        if (spare.empty()) {
            return std::nullopt;
        }
        keys.lendForShortcut({spare.front(), XKB_KEY_v});
        connection_.flush();
        borrowedAt_ = clock_.now();
        keepFor(beforeKeys, spare.front());
    }
    return borrowed_;
}

void X11PasteKeys::keepFor(Duration time, XKeyCode key) {
    borrowed_ = key;
    returnLater_ = clock_.after(time, [this, key] {
        borrowed_.reset();
        layout_.borrowed().letGo(key);
    });
}

Duration X11PasteKeys::untilKnown() const {
    return borrowed_ ? borrowedAt_ + settleTime - clock_.now() : Duration::zero();
}

void X11PasteKeys::fakeKey(XKeyCode key, bool press) {
    layout_.keyboard().fakeKey(key, press);
    connection_.flush();
}

} // namespace lorvane
