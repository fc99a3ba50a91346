// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

namespace lorvane {

/// Whether anybody on the session bus shows status items, as org.kde.StatusNotifierWatcher tells. Main
/// thread, nothing waits.
class StatusHosts : public QObject {
    Q_OBJECT

 public:
    static inline const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
    static inline const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

    explicit StatusHosts(QDBusConnection session);

    [[nodiscard]] bool hasHost() const { return hasHost_; }
    /// Told the first answer and every other one from then on. A watcher that is replaced is one that went
    /// and one that came: it knows no items.
    [[nodiscard]] Handle subscribe(std::function<void()> observer) {
        return changed_.subscribe(std::move(observer));
    }

 private Q_SLOTS:
    void ask();

 private:
    void learn(bool hasHost);

    QDBusConnection session_;
    QDBusServiceWatcher service_;
    /// Counts the questions, so that a late answer to an earlier one is dropped.
    int asked_ = 0;
    bool isKnown_ = false;
    bool hasHost_ = false;
    Signal<> changed_;
};

} // namespace lorvane
