// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "core/PasteKeys.h"
#include "platform/linux/x11/PasteChord.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Keyboards.h"

#include <vector>

namespace lorvane {

/// Posts the keys that paste, by the XTEST extension on the layout of the moment. Main thread.
class X11PasteKeys final : public PasteKeys {
 public:
    X11PasteKeys(X11Connection& connection, Clock& clock)
        : connection_(connection), clock_(clock), keyboards_(connection) {}
    X11PasteKeys(const X11PasteKeys&) = delete;
    X11PasteKeys& operator=(const X11PasteKeys&) = delete;

    QCoro::Task<bool> post(PasteRoute route, TaskScope scope) override;

 private:
    [[nodiscard]] bool canPost();
    /// The modifier keys that are down now; Caps Lock and the like are none.
    [[nodiscard]] std::vector<XKeyCode> heldModifiers();
    [[nodiscard]] Chord chordFor(PasteRoute route);
    void fakeKey(XKeyCode key, bool press);

    X11Connection& connection_;
    Clock& clock_;
    X11Keyboards keyboards_;
};

} // namespace lorvane
