// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "core/PasteKeys.h"
#include "platform/linux/x11/PasteChord.h"
#include "platform/linux/x11/TypingLayout.h"
#include "platform/linux/x11/X11Connection.h"

#include <vector>

namespace lorvane {

/// Posts the keys that paste, by the XTEST extension on the layout of the moment. For a terminal a layout
/// without a v gets one on a spare key, for a moment. Main thread.
class X11PasteKeys final : public PasteKeys {
 public:
    X11PasteKeys(X11Connection& connection, Clock& clock, TypingLayout& layout)
        : connection_(connection), clock_(clock), layout_(layout) {}
    X11PasteKeys(const X11PasteKeys&) = delete;
    X11PasteKeys& operator=(const X11PasteKeys&) = delete;

    /// Borrows a key for the v, where there is one to be had.
    [[nodiscard]] bool readsPrimary(PasteRoute route) override;
    QCoro::Task<KeysOutcome> post(Aim aim, TaskScope scope) override;

 private:
    [[nodiscard]] std::vector<XKeyCode> heldModifiers();
    [[nodiscard]] Chord chordFor(PasteRoute route);
    /// Of the layout; for a terminal also one that is borrowed for a while.
    [[nodiscard]] std::optional<XKeyCode> keyOfV(PasteRoute route, const KeyboardMoment& moment);
    [[nodiscard]] std::optional<XKeyCode> borrowV(const KeyboardMoment& moment);
    void keepFor(Duration time, XKeyCode key);
    /// How long a key that was borrowed may still be unknown to the application.
    [[nodiscard]] Duration untilKnown() const;
    void fakeKey(XKeyCode key, bool press);

    X11Connection& connection_;
    Clock& clock_;
    TypingLayout& layout_;
    std::optional<XKeyCode> borrowed_;
    Instant borrowedAt_;
    Handle returnLater_;
};

} // namespace lorvane
