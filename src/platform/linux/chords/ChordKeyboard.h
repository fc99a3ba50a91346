// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PasteKeys.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace lorvane {

/// A keyboard that the desktop lends for a session, which is opened for keys and closed after them, since the
/// user sees it or others wait for it. The compositor has one state of modifiers for all keyboards: what the
/// user holds works on these keys too, and cannot be lifted from here. Main thread.
class ChordKeyboard {
 public:
    explicit ChordKeyboard(Clock& clock);
    ChordKeyboard(const ChordKeyboard&) = delete;
    ChordKeyboard& operator=(const ChordKeyboard&) = delete;
    virtual ~ChordKeyboard() = default;

    [[nodiscard]] virtual bool isOffered() const = 0;
    /// Opens a session, unless one is open. False when there is none.
    virtual QCoro::Task<bool> open(TaskScope scope) = 0;
    /// Ends the session, which lets go of all its keys.
    virtual void close() = 0;

    /// Presses keys, Linux input codes, in this order, slowly enough for applications to see each one with
    /// its modifiers, and lets them go in the opposite order; the last one is what acts. What was pressed is
    /// let go even when not all could be, by the end of the session. One at a time. Opens a session, which
    /// stays open until `close`.
    /// A compositor may ask the user's input method about each key and deliver it later, but tell at once
    /// what modifiers are down: so these stay down until the keys have had their effect, at most 0.5 s.
    QCoro::Task<KeysOutcome> chord(std::vector<int> inputCodes, std::function<bool()> hasEffect,
                                   TaskScope scope);
    /// Keys of ours may be going past at the moment.
    [[nodiscard]] bool isPosting() const;

 protected:
    /// One key of the open session. `unknown` when nobody answers whether it moved.
    virtual QCoro::Task<KeysOutcome> move(int inputCode, bool down, TaskScope scope) = 0;

 private:
    QCoro::Task<void> awaitDelivery(std::function<bool()> hasEffect, TaskScope scope);
    QCoro::Task<KeysOutcome> press(std::vector<int> inputCodes, TaskScope scope);

    Clock& clock_;
    int posting_ = 0;
    Instant lastPosted_;
};

/// What keys by such a keyboard need to know besides.
struct ChordFacts {
    /// The modifiers that the user holds, as bits of `modifierFlag`, as far as anyone can tell.
    std::function<std::uint32_t()> heldModifiers;
    /// The keys that paste on the layout of the moment, Linux input codes, in the order in which they are
    /// pressed; none when it has none.
    std::function<std::vector<int>(PasteRoute)> pasteChord;
};

/// Waits at most 0.5 s until the user holds no modifier any more; false when one is held still.
QCoro::Task<bool> awaitBareKeyboard(ChordFacts facts, Clock& clock, TaskScope scope);

} // namespace lorvane
