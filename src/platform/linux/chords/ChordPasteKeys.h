// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/chords/ChordKeyboard.h"

namespace lorvane {

/// Posts the keys that paste by a session that is opened for this. Modifiers that are held for longer than is
/// waited cannot be lifted here: then nothing is posted, unless they are the chord's own. Main thread.
class ChordPasteKeys final : public PasteKeys {
 public:
    ChordPasteKeys(ChordKeyboard& keyboard, Clock& clock, ChordFacts facts)
        : keyboard_(keyboard), clock_(clock), facts_(std::move(facts)) {}

    QCoro::Task<KeysOutcome> post(Aim aim, TaskScope scope) override;

 private:
    /// No chord, or one that what the user holds would make another one of.
    [[nodiscard]] bool isSpoiled(const std::vector<int>& chord) const;

    ChordKeyboard& keyboard_;
    Clock& clock_;
    ChordFacts facts_;
};

} // namespace lorvane
