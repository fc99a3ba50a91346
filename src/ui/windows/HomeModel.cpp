// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/windows/HomeModel.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>

namespace lorvane {

namespace {

QString readable(WallTime time) {
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch());
    return QLocale().toString(QDateTime::fromMSecsSinceEpoch(milliseconds.count()), QLocale::ShortFormat);
}

} // namespace

HomeModel::HomeModel(const Localisation& words, RecentDictations& dictations, QString holdKey)
    : words_(words), dictations_(dictations), holdKey_(std::move(holdKey)), shown_(dictations_.newest(most)) {
    subscription_ = dictations_.subscribe([this] { reload(); });
}

QString HomeModel::emptyHint() const {
    return words_.text("Hold %1 in any text field and speak. What you said appears here.").arg(holdKey_);
}

int HomeModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

QVariant HomeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const RecentDictation& dictation = shown_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case textRole:
        return dictation.text;
    case whenRole:
        return readable(dictation.createdAt);
    default:
        return {};
    }
}

QHash<int, QByteArray> HomeModel::roleNames() const { return {{textRole, "text"}, {whenRole, "when"}}; }

// A new dictation is one row at the front, and the list keeps its place; anything else is a new list.
void HomeModel::reload() {
    auto newest = dictations_.newest(most);
    if (newest == shown_) {
        return;
    }
    const bool isOneMore =
        newest.size() == shown_.size() + 1 && std::equal(shown_.begin(), shown_.end(), newest.begin() + 1);
    if (isOneMore) {
        beginInsertRows({}, 0, 0);
        shown_ = std::move(newest);
        endInsertRows();
    } else {
        beginResetModel();
        shown_ = std::move(newest);
        endResetModel();
    }
}

} // namespace lorvane
