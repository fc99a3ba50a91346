// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1String>
#include <QString>

#include <cstdint>
#include <optional>

namespace lorvane {

/// A key code of the X server: the place of the key on the keyboard, whatever the layout makes of it
/// (the codes of Linux input events plus 8).
using XKeyCode = std::uint8_t;

/// What a place on the keyboard means to the program.
struct KeyMeaning {
    enum class Sort {
        modifier, ///< told when it goes down and up
        lock,     ///< Caps Lock: never told
        other     ///< told when it goes down
    };
    Sort sort = Sort::other;
    /// As in KeyEvents.h.
    int code = 0;
    /// The bit that is set while it is down; 0 for what is no modifier.
    std::uint32_t mask = 0;
};

/// `extraKey`: the place that stands for `fn`.
[[nodiscard]] KeyMeaning meaningOf(XKeyCode key, std::optional<XKeyCode> extraKey);

/// The place of a name of the preference "tirra.linux.extraKey"; nothing for a name that is none.
[[nodiscard]] std::optional<XKeyCode> extraKeyFromName(const QString& name);

} // namespace lorvane
