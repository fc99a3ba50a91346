// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace lorvane {

/// How many surrogate pairs stand in a field whose application counts code points, so that its length in
/// UTF-16 units is known without fetching the text again. Entered once from the whole text, then carried on
/// by the application's own change events, and believed only as long as the character count that it predicts
/// is the one that is read: a lost or wrong event costs a fetch, never a wrong position.
class TextLedger {
 public:
    /// The whole text was read.
    void enter(qint64 characters, qint64 pairs);
    void inserted(qint64 characters, const QString& text) { apply(characters, text, 1); }
    void removed(qint64 characters, const QString& text) { apply(characters, text, -1); }
    void invalidate() { valid_ = false; }

    /// The pairs in a field that has `characters` code points now; absent when the text has to be read.
    [[nodiscard]] std::optional<qint64> pairsFor(qint64 characters) const;

 private:
    void apply(qint64 characters, const QString& text, int sign);

    bool valid_ = false;
    qint64 characters_ = 0;
    qint64 pairs_ = 0;
};

} // namespace lorvane
