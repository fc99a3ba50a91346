// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/WlrootsPasteKeys.h"

#include "platform/linux/wlroots/CommandKeys.h"

namespace lorvane {

namespace {

constexpr Duration keyTime = std::chrono::milliseconds(30);

struct Chord {
    std::uint32_t modifiers;
    std::uint32_t key;
};

Chord chordOf(PasteRoute route) {
    switch (route) {
    case PasteRoute::terminal:
        return {commandKeys::control | commandKeys::shift, commandKeys::letterV};
    case PasteRoute::primaryTerminal:
        return {commandKeys::shift, commandKeys::insert};
    case PasteRoute::standard:
        break;
    }
    return {commandKeys::control, commandKeys::letterV};
}

/// Lets go of what it pressed, whatever ends the wait in between.
class PressedChord {
 public:
    PressedChord(VirtualKeyboard& keyboard, Chord chord) : keyboard_(keyboard), chord_(chord) {
        keyboard_.holdModifiers(chord_.modifiers);
        keyboard_.move(chord_.key, true);
        keyboard_.flush();
    }
    PressedChord(const PressedChord&) = delete;
    PressedChord& operator=(const PressedChord&) = delete;
    ~PressedChord() {
        keyboard_.move(chord_.key, false);
        keyboard_.holdModifiers(0);
        keyboard_.flush();
    }

 private:
    VirtualKeyboard& keyboard_;
    Chord chord_;
};

} // namespace

QCoro::Task<KeysOutcome> WlrootsPasteKeys::post(Aim aim, TaskScope scope) {
    if (!keyboard_.useKeymap(commandKeys::keymap())) {
        co_return KeysOutcome::notPosted;
    }
    {
        const PressedChord pressed(keyboard_, chordOf(aim()));
        co_await sleep(clock_, keyTime, scope);
    }
    co_return connection_.isAlive() ? KeysOutcome::posted : KeysOutcome::unknown;
}

} // namespace lorvane
