// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/TextLedger.h"

#include "platform/linux/atspi/TextUnits.h"

namespace lorvane {

void TextLedger::enter(qint64 characters, qint64 pairs) {
    valid_ = true;
    characters_ = characters;
    pairs_ = pairs;
}

std::optional<qint64> TextLedger::pairsFor(qint64 characters) const {
    if (!valid_ || characters != characters_) {
        return std::nullopt;
    }
    return pairs_;
}

void TextLedger::apply(qint64 characters, const QString& text, int sign) {
    const qint64 pairs = surrogatePairs(text);
    // An event whose text is not as long as it says is no ground to count on.
    if (characters != text.size() - pairs) {
        invalidate();
        return;
    }
    characters_ += sign * characters;
    pairs_ += sign * pairs;
}

} // namespace lorvane
