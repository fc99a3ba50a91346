// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/HistoryJournal.h"

#include "base/PreferenceCatalogue.h"

namespace lorvane {

void HistoryJournal::add(const DeliveredTake& take) {
    HistoryItem item;
    item.id = QUuid::fromString(take.id);
    item.text = take.text;
    item.raw = take.raw;
    item.createdAt = FileDate::of(take.createdAt);
    item.category = take.category;
    item.durationSec = take.durationSec;
    item.device = take.device;
    history_.add(std::move(item));
}

void HistoryJournal::setGoalStreak(int streak) { preferences_.set(preference::goalStreak, streak); }

} // namespace lorvane
