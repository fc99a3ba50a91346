// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Dates.h"

#include <QString>
#include <QUuid>

#include <algorithm>
#include <optional>

namespace lorvane {

/// A moment as the files keep it: seconds since 2001-01-01 00:00:00 UTC. Holds every finite number that a
/// file may have, so what was read is written back as it was, also where no calendar reaches.
struct FileDate {
    double seconds = 0;

    [[nodiscard]] static FileDate of(WallTime time) { return FileDate{toFileDate(time)}; }
    /// Moments more than 250 years from 2001 become the last that can be told.
    [[nodiscard]] WallTime time() const { return fromFileDate(std::clamp(seconds, -farthest, farthest)); }
    auto operator<=>(const FileDate&) const = default;

 private:
    static constexpr double farthest = 250 * 365.25 * 86'400;
};

/// One finished dictation. A value; compared over all fields, told apart by `id`.
struct HistoryItem {
    /// Made with the item and never used again: the same item on another device has the same.
    QUuid id;
    QString text;
    /// The text of the take as it came; never changed.
    QString raw;
    FileDate createdAt;
    /// The id of its label.
    std::optional<QString> category;
    std::optional<QString> translatedTo;
    std::optional<FileDate> sentAt;
    std::optional<QString> sentVia;
    std::optional<double> durationSec;
    /// "mac" on items made here, "ios" on items from the phone, absent on old ones.
    std::optional<QString> device;

    bool operator==(const HistoryItem&) const = default;
};

} // namespace lorvane
