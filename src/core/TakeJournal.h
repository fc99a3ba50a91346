// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <QString>

#include <optional>

namespace lorvane {

/// One dictation that yielded text.
struct DeliveredTake {
    QString id;
    QString text;
    QString raw;
    WallTime createdAt;
    std::optional<QString> category;
    double durationSec = 0;
    QString device;
};

/// Where finished takes are kept and counted. Main thread; nothing here fails.
class TakeJournal {
 public:
    virtual ~TakeJournal() = default;
    /// Adds at the front of the history.
    virtual void add(const DeliveredTake& take) = 0;
    /// `application` is empty when unknown.
    virtual void recordHit(const QString& application, int words) = 0;
    virtual void setGoalStreak(int streak) = 0;
};

} // namespace lorvane
