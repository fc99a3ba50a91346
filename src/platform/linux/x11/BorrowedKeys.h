// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/SpareKeys.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Keyboards.h"

#include <array>

namespace lorvane {

/// Lends symbols to the spare keys of the X server, for all of its keyboards. What is borrowed stands in a
/// property of the root window before it is done, so that a later run puts back what this one could not.
/// Main thread.
class BorrowedKeys {
 public:
    /// Puts back what a run that crashed has left.
    explicit BorrowedKeys(X11Connection& connection);
    BorrowedKeys(const BorrowedKeys&) = delete;
    BorrowedKeys& operator=(const BorrowedKeys&) = delete;
    ~BorrowedKeys() {
        kept_.reset();
        giveBack();
    }

    [[nodiscard]] const SpareKeys& keys() const { return keys_; }
    /// Looks anew which keys are spare. Some round trips.
    void survey();
    /// On its way with the next flush.
    void change(const std::vector<KeyChange>& changes);
    void use(XKeyCode key) { keys_.use(key); }
    /// With the capital under Shift, as programs expect it of a letter's key. Stays through `giveBack` until
    /// it is let go.
    void lendForShortcut(const KeyChange& letter);
    void letGo(XKeyCode key);
    /// Every key that is not kept back to no symbol, unless something else has changed it. Some round trips.
    void giveBack();

 private:
    /// What a key carries on any keyboard: NoSymbol for nothing, absent for several things.
    using Carried = std::array<std::optional<xkb_keysym_t>, 256>;
    [[nodiscard]] Carried carriedByKeys();
    [[nodiscard]] std::vector<KeyChange> noted();
    void note(const std::vector<KeyChange>& borrowed);
    void giveBack(const SpareKeys::Keys& which);
    void write(const std::vector<KeyRange>& ranges);
    /// Those of the keys that still carry exactly that.
    void clear(const std::vector<KeyChange>& borrowed);

    X11Connection& connection_;
    X11Keyboards keyboards_;
    SpareKeys keys_;
    /// Those of shortcuts.
    SpareKeys::Keys kept_;
};

} // namespace lorvane
