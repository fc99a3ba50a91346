// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QObject>

namespace lorvane {

/// A notification of the desktop, one at a time in the same place. A desktop without a notification service
/// shows nothing. Main thread.
class Notification : public QObject {
 public:
    explicit Notification(QDBusConnection bus) : bus_(std::move(bus)) {}
    void show(const QString& text);

 private:
    QDBusConnection bus_;
    /// The one on screen, which the next one replaces; 0 for none.
    quint32 shownId_ = 0;
};

} // namespace lorvane
