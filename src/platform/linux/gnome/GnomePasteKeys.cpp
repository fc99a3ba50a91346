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

QCoro::Task<bool> GnomePasteKeys::post(PasteRoute route, TaskScope scope) {
    if (!keys_.isOffered()) {
        co_return false;
    }
    const Instant deadline = clock_.now() + patience;
    while (keyboard_.heldModifiers() != 0 && clock_.now() < deadline) {
        co_await sleep(clock_, pollPeriod, scope);
    }
    const std::vector<int> chord = keyboard_.pasteChord(route);
    const bool isSpoiled = (keyboard_.heldModifiers() & ~modifiersOf(chord)) != 0;
    if (chord.empty() || isSpoiled) {
        co_return false;
    }
    const bool posted = co_await keys_.chord(chord, scope);
    keys_.close();
    co_return posted;
}

} // namespace lorvane
