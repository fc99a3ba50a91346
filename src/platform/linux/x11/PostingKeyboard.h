// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/KeymapWatch.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11KeyTable.h"
#include "platform/linux/x11/X11Keyboards.h"
#include "platform/linux/x11/Xkb.h"

#include <optional>
#include <vector>

namespace lorvane {

/// The state of all keyboards together, the posted keys among them.
struct KeyboardMoment {
    /// The layout in force, counted from 0.
    xkb_layout_index_t group = 0;
    bool capsLock = false;
    X11Keyboards::Keys down;
    /// Those of them that are modifiers; Caps Lock and the like are none.
    std::vector<XKeyCode> heldModifiers;
};

/// Posts keys by the XTEST extension. Main thread.
class PostingKeyboard {
 public:
    /// `isOfNoConcern`: the map need not be read anew when that key alone has changed.
    explicit PostingKeyboard(
        X11Connection& connection,
        std::function<bool(XKeyCode)> isOfNoConcern = [](XKeyCode) { return false; });
    PostingKeyboard(const PostingKeyboard&) = delete;
    PostingKeyboard& operator=(const PostingKeyboard&) = delete;
    ~PostingKeyboard() = default;

    /// The display answers and has XTEST and XKB.
    [[nodiscard]] bool canPost();
    /// The map of the keyboard that XTEST posts on, since the server hands that one out with its keys. Null
    /// when it cannot be had. Several round trips after a change.
    [[nodiscard]] xkb_keymap* keymap();
    /// Counts how often the map has been read.
    [[nodiscard]] int edition() const { return edition_; }
    /// Absent when the display is gone. A round trip.
    [[nodiscard]] std::optional<KeyboardMoment> moment();

    // What follows is on its way with the next flush of the connection.

    /// Makes the keys that come next bare: lifts the modifiers, and ends a grab of our own, by which a held
    /// extra key would bring them to us.
    void lift(const std::vector<XKeyCode>& modifiers);
    void fakeKey(XKeyCode key, bool press);
    void lockCaps(bool locked);

 private:
    [[nodiscard]] XkbKeymap readKeymap();

    X11Connection& connection_;
    X11Keyboards keyboards_;
    KeymapWatch watch_;
    XkbContext context_;
    XkbKeymap keymap_;
    X11Keyboards::Keys modifiers_;
    int edition_ = 0;
};

} // namespace lorvane
