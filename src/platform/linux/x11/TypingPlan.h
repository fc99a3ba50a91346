// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/CharacterKeys.h"
#include "platform/linux/x11/SpareKeys.h"

#include <QString>

#include <optional>
#include <string_view>
#include <vector>

namespace lorvane {

/// As much of a text as the spare keys hold at a time: the changes come first, all at once, then the keys.
struct TypingRound {
    std::vector<KeyChange> changes;
    /// One a character.
    std::vector<KeyStroke> strokes;
};

/// The code points, unless one is no character of a text: a control character or half of one.
[[nodiscard]] std::optional<std::u32string> typeable(const QString& text);
/// Whether each character is on the layout, or there is a spare key for it outside of `down`.
[[nodiscard]] bool canType(std::u32string_view text, const CharacterKeys& layout, const SpareKeys& spare,
                           const SpareKeys::Keys& down);
/// The first round for a text. Keys that are down are never changed.
[[nodiscard]] TypingRound planRound(std::u32string_view text, const CharacterKeys& layout,
                                    const SpareKeys& spare, const SpareKeys::Keys& down);

} // namespace lorvane
