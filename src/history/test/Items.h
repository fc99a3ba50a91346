// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/Backup.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <ostream>

namespace lorvane {

inline QUuid uuid(int number) {
    return QUuid(QStringLiteral("ABCDEF01-2345-6789-ABCD-%1").arg(number, 12, 10, QLatin1Char('0')));
}

/// An item with what every item has.
inline HistoryItem bareItem(int number, const QString& text = QStringLiteral("text")) {
    HistoryItem item;
    item.id = uuid(number);
    item.text = text;
    item.raw = QStringLiteral("raw");
    item.createdAt = FileDate{789'000'000.5 + number};
    return item;
}

/// An item with everything.
inline HistoryItem fullItem(int number) {
    HistoryItem item = bareItem(number);
    item.category = QStringLiteral("work");
    item.translatedTo = QStringLiteral("de");
    item.sentAt = FileDate{789'000'100.25};
    item.sentVia = QStringLiteral("mail");
    item.durationSec = 12.34;
    item.device = QStringLiteral("ios");
    return item;
}

/// The ids of a list in their order, by the numbers that `uuid` makes them of.
inline std::vector<int> numbersOf(const HistoryList& list) {
    std::vector<int> numbers;
    for (const HistoryItem& item : list) {
        numbers.push_back(item.id.toString(QUuid::WithoutBraces).right(12).toInt());
    }
    return numbers;
}

/// As another reader of the format sees it.
inline QJsonObject asJson(const QByteArray& bytes) { return QJsonDocument::fromJson(bytes).object(); }

inline void PrintTo(const HistoryItem& item, std::ostream* out) {
    *out << item.id.toString().toStdString() << " \"" << item.text.toStdString() << '"';
}

} // namespace lorvane
