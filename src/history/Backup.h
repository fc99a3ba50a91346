// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/HistoryList.h"

#include <QByteArray>

namespace lorvane {

/// The whole history at one moment: what the file holds and what other devices are sent.
struct Backup {
    FileDate exportedAt;
    HistoryList history;
    /// Every id that was ever deleted, on any device.
    QSet<QUuid> deleted;

    bool operator==(const Backup&) const = default;
};

/// The format, which other devices read and write as well:
/// one JSON object with "version" (written as 2, any number is read), "exportedAt", "history" and "deleted"
/// (always written, taken for empty when missing). Dates are FileDates; ids are in the canonical form of 36
/// characters, in upper case (read in either). An item has "id", "text", "raw" and "createdAt", and the other
/// keys only when they are there. Unknown keys are passed over, a null counts as a missing key.
/// Both functions may run on any thread.

/// Compact, in UTF-8. Absent when a number in it is not finite, which JSON cannot say.
[[nodiscard]] std::optional<QByteArray> encodeBackup(const Backup& backup);

/// Absent when anything in it is not as it should be, down to one field of one item. Saves a copy of the
/// bytes when they have room for `decodingRoom` more.
[[nodiscard]] std::optional<Backup> decodeBackup(const QByteArray& bytes);

constexpr qsizetype decodingRoom = 64;

} // namespace lorvane
