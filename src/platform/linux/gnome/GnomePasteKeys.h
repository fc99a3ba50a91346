// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PasteKeys.h"
#include "platform/linux/gnome/RemoteDesktopKeys.h"

#include <cstdint>
#include <functional>

namespace lorvane {

/// What keys by a remote desktop session need to know besides.
struct GnomeKeyboard {
    /// The modifiers that the user holds, as bits of `modifierFlag`, as far as anyone can tell.
    std::function<std::uint32_t()> heldModifiers;
    /// The keys that paste on the layout of the moment, Linux input codes, in the order in which they are
    /// pressed; none when it has none.
    std::function<std::vector<int>(PasteRoute)> pasteChord;
};

/// Posts the keys that paste by a session that is opened for this. Modifiers that are held for longer than is
/// waited cannot be lifted here: then nothing is posted, unless they are the chord's own. Main thread.
class GnomePasteKeys final : public PasteKeys {
 public:
    GnomePasteKeys(RemoteDesktopKeys& keys, Clock& clock, GnomeKeyboard keyboard)
        : keys_(keys), clock_(clock), keyboard_(std::move(keyboard)) {}

    QCoro::Task<KeysOutcome> post(Aim aim, TaskScope scope) override;

 private:
    /// No chord, or one that what the user holds would make another one of.
    [[nodiscard]] bool isSpoiled(const std::vector<int>& chord) const;

    RemoteDesktopKeys& keys_;
    Clock& clock_;
    GnomeKeyboard keyboard_;
};

} // namespace lorvane
