// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Dates.h"

#include <QDateTime>
#include <QLocale>
#include <QUuid>

#include <cmath>

namespace lorvane {

namespace {

constexpr WallTime referenceDate = WallTime(std::chrono::sys_days(std::chrono::year(2001) / 1 / 1));

} // namespace

double toFileDate(WallTime time) {
    // Whole seconds and the rest apart: a nanosecond count of decades does not fit a double's 53 bits.
    const auto since = time - referenceDate;
    const auto whole = std::chrono::floor<std::chrono::seconds>(since);
    return static_cast<double>(whole.count()) + inSeconds(since - whole);
}

WallTime fromFileDate(double secondsSinceReference) {
    const double whole = std::floor(secondsSinceReference);
    return referenceDate + std::chrono::seconds(static_cast<std::int64_t>(whole)) +
           seconds(secondsSinceReference - whole);
}

QString newUuid() { return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper(); }

QString dayKey(WallTime time) {
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
    return QLocale::c().toString(QDateTime::fromMSecsSinceEpoch(milliseconds).date(), u"yyyy-MM-dd");
}

} // namespace lorvane
