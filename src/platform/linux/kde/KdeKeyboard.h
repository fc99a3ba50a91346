// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PasteKeys.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace lorvane {

/// What keys by fake input need to know besides.
struct KdeKeyboard {
    /// The modifiers that the user is known to hold, as bits of `modifierFlag`. KWin tells a program without
    /// the focus of the hold key only.
    std::function<std::uint32_t()> heldModifiers;
    /// The keys that paste on the layout of the moment, Linux input codes, in the order in which they are
    /// pressed; none when it has none.
    std::function<std::vector<std::uint32_t>(PasteRoute)> pasteChord;
};

} // namespace lorvane
