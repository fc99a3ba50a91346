// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/chords/ChordPasteKeys.h"

#include "input/KeyEvents.h"

#include <algorithm>

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

std::uint32_t modifiersOf(const std::vector<int>& chord) {
    const auto has = [&chord](int inputCode) {
        return std::find(chord.begin(), chord.end(), inputCode) != chord.end();
    };
    return (has(KEY_LEFTCTRL) || has(KEY_RIGHTCTRL) ? modifierFlag::control : 0) |
           (has(KEY_LEFTSHIFT) || has(KEY_RIGHTSHIFT) ? modifierFlag::shift : 0);
}

} // namespace

QCoro::Task<KeysOutcome> ChordPasteKeys::post(Aim aim, TaskScope scope) {
    if (!keyboard_.isOffered()) {
        co_return KeysOutcome::notPosted;
    }
    (void)co_await awaitBareKeyboard(facts_, clock_, scope);
    if (isSpoiled(facts_.pasteChord(PasteRoute::terminal))) {
        co_return KeysOutcome::notPosted; // for this no session is worth opening
    }
    const bool opened = co_await keyboard_.open(scope);
    KeysOutcome outcome = KeysOutcome::notPosted;
    const std::vector<int> chord = opened ? facts_.pasteChord(aim()) : std::vector<int>();
    if (!isSpoiled(chord)) {
        const std::function<bool()> hasEffect = [aim] { return aim.hasEffect(); };
        outcome = co_await keyboard_.chord(chord, hasEffect, scope);
    }
    keyboard_.close();
    co_return outcome;
}

bool ChordPasteKeys::isSpoiled(const std::vector<int>& chord) const {
    return chord.empty() || (facts_.heldModifiers() & ~modifiersOf(chord)) != 0;
}

} // namespace lorvane
