// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/gnome/GnomePasteKeys.h"

#include "input/KeyEvents.h"

#include <algorithm>

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

constexpr Duration patience = std::chrono::milliseconds(500);
constexpr Duration pollPeriod = std::chrono::milliseconds(10);

std::uint32_t modifiersOf(const std::vector<int>& chord) {
    const auto has = [&chord](int inputCode) {
        return std::find(chord.begin(), chord.end(), inputCode) != chord.end();
    };
    return (has(KEY_LEFTCTRL) || has(KEY_RIGHTCTRL) ? modifierFlag::control : 0) |
           (has(KEY_LEFTSHIFT) || has(KEY_RIGHTSHIFT) ? modifierFlag::shift : 0);
}

} // namespace

QCoro::Task<KeysOutcome> GnomePasteKeys::post(Aim aim, TaskScope scope) {
    if (!keys_.isOffered()) {
        co_return KeysOutcome::notPosted;
    }
    const Instant deadline = clock_.now() + patience;
    while (keyboard_.heldModifiers() != 0 && clock_.now() < deadline) {
        co_await sleep(clock_, pollPeriod, scope);
    }
    if (isSpoiled(keyboard_.pasteChord(PasteRoute::terminal))) {
        co_return KeysOutcome::notPosted; // for this no session is worth opening
    }
    const bool opened = co_await keys_.open(scope);
    KeysOutcome outcome = KeysOutcome::notPosted;
    const std::vector<int> chord = opened ? keyboard_.pasteChord(aim()) : std::vector<int>();
    if (!isSpoiled(chord)) {
        const std::function<bool()> hasEffect = [aim] { return aim.hasEffect(); };
        outcome = co_await keys_.chord(chord, hasEffect, scope);
    }
    keys_.close();
    co_return outcome;
}

bool GnomePasteKeys::isSpoiled(const std::vector<int>& chord) const {
    return chord.empty() || (keyboard_.heldModifiers() & ~modifiersOf(chord)) != 0;
}

} // namespace lorvane
