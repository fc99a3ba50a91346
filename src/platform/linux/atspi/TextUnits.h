// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace lorvane {

/// What an application counts when it speaks of positions in a text.
enum class TextUnit { utf16, codePoints };

/// What a toolkit is known to count; absent for one that is not known.
[[nodiscard]] std::optional<TextUnit> unitOfToolkit(const QString& toolkitName);
/// Whether the toolkit puts U+FEFF into what it hands over: one in the place of each second half of a
/// surrogate pair (its positions count UTF-16 units, the interface counts characters), and one at the end of
/// a field.
[[nodiscard]] bool toolkitPadsText(const QString& toolkitName);

/// Whether the toolkit shows a text that ends with a line feed with one line feed more (the empty last line
/// of a text area is an element of the page with a break in it).
[[nodiscard]] bool toolkitRepeatsLastLineFeed(const QString& toolkitName);
/// The length that InsertText wants with a text: Qt takes UTF-16 units and fills up with NULs what is
/// missing, all others take bytes of UTF-8 and cut.
[[nodiscard]] qint64 insertionLength(const QString& toolkitName, const QString& text);

/// Surrogate pairs: by so many UTF-16 units a text is longer than it has code points.
[[nodiscard]] qint64 surrogatePairs(const QString& text);
/// The length of a text as an application counts it.
[[nodiscard]] qint64 lengthIn(TextUnit unit, const QString& text);
/// The text without the padding described at `toolkitPadsText`.
[[nodiscard]] QString withoutPadding(const QString& text);
/// Whether a whole text, given with padding, ends with the padding of its field and not with that of a
/// character.
[[nodiscard]] bool endsWithFieldPadding(const QString& text);
/// The unit in which `count` is the length of the whole `text`; absent when it is neither. `assumed` decides
/// where both units give the same.
[[nodiscard]] std::optional<TextUnit> provenUnit(const QString& text, qint64 count, TextUnit assumed);
/// Nothing but white space and line ends.
[[nodiscard]] bool isBlank(const QString& text);

} // namespace lorvane
