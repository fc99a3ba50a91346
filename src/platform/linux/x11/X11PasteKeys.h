// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "core/PasteKeys.h"
#include "platform/linux/x11/PasteChord.h"
#include "platform/linux/x11/PostingKeyboard.h"
#include "platform/linux/x11/X11Connection.h"

#include <vector>

namespace lorvane {

/// Posts the keys that paste, by the XTEST extension on the layout of the moment. Main thread.
class X11PasteKeys final : public PasteKeys {
 public:
    X11PasteKeys(X11Connection& connection, Clock& clock)
        : connection_(connection), clock_(clock), keyboard_(connection) {}
    X11PasteKeys(const X11PasteKeys&) = delete;
    X11PasteKeys& operator=(const X11PasteKeys&) = delete;

    QCoro::Task<KeysOutcome> post(Aim aim, TaskScope scope) override;

 private:
    [[nodiscard]] std::vector<XKeyCode> heldModifiers();
    [[nodiscard]] Chord chordFor(PasteRoute route);
    void fakeKey(XKeyCode key, bool press);

    X11Connection& connection_;
    Clock& clock_;
    PostingKeyboard keyboard_;
};

} // namespace lorvane
