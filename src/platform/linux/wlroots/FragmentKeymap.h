// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace lorvane {

/// A keymap made for one fragment of text, each character on a key of its own without any modifier, and the
/// keys that give the text.
struct FragmentKeymap {
    /// Text of an XKB keymap; includes nothing, so that no program needs files to read it.
    QByteArray keymap;
    /// Codes of Linux input events.
    std::vector<std::uint32_t> keys;

    /// Nothing for an empty text, one with more than 47 different characters, and one with characters that
    /// are not typed by such keys: control characters, and those above U+FFFF, of which Chromium takes only
    /// the lower half (an emoji arrives as a private character).
    [[nodiscard]] static std::optional<FragmentKeymap> of(const QString& text);
};

} // namespace lorvane
