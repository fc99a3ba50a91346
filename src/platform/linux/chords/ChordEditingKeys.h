// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/EditingKeys.h"
#include "platform/linux/chords/ChordKeyboard.h"

#include <deque>

namespace lorvane {

/// Single keys by a session that is opened for them and closed soon after the last one. A key waits for held
/// modifiers to be let go, as they cannot be lifted here, and is dropped when they are not; with it those
/// behind it, which were meant for what it would have left. Main thread.
class ChordEditingKeys final : public EditingKeys {
 public:
    ChordEditingKeys(ChordKeyboard& keyboard, Clock& clock, ChordFacts facts)
        : keyboard_(keyboard), clock_(clock), facts_(std::move(facts)) {}

    [[nodiscard]] std::uint32_t modifierFlags() override { return facts_.heldModifiers(); }
    [[nodiscard]] bool canPost() override { return keyboard_.isOffered(); }
    void press(EditingKey key) override;
    [[nodiscard]] bool isPending() override { return pressing_.isRunning(); }

 private:
    QCoro::Task<void> pressQueued(TaskScope scope);

    ChordKeyboard& keyboard_;
    Clock& clock_;
    ChordFacts facts_;
    std::deque<int> queue_;
    Handle closing_;
    TaskHandle pressing_;
};

} // namespace lorvane
