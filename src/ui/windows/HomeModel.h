// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Localisation.h"
#include "ui/windows/RecentDictations.h"

#include <QAbstractListModel>

namespace lorvane {

/// What the home window shows: the dictations of late, in words and dates that are ready to be read. Main
/// thread.
class HomeModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString emptyTitle READ emptyTitle CONSTANT)
    Q_PROPERTY(QString emptyHint READ emptyHint CONSTANT)

 public:
    /// So many dictations are shown at most.
    static constexpr std::size_t most = 200;
    enum Role { textRole = Qt::UserRole, whenRole };

    /// `holdKey`: how the key that is held to dictate is called.
    HomeModel(const Localisation& words, RecentDictations& dictations, QString holdKey);

    [[nodiscard]] QString title() const { return words_.text("Recent dictations"); }
    [[nodiscard]] QString emptyTitle() const { return words_.text("Nothing dictated yet"); }
    [[nodiscard]] QString emptyHint() const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

 private:
    void reload();

    const Localisation& words_;
    RecentDictations& dictations_;
    QString holdKey_;
    std::vector<RecentDictation> shown_;
    Handle subscription_;
};

} // namespace lorvane
