// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

#include <functional>

namespace lorvane {

/// Who has a name on the bus, followed as it changes. Main thread; nothing waits for the bus.
class BusName final : public QObject {
 public:
    /// `changed` is told after the owner has become another; for one that takes over from another, twice:
    /// without an owner first.
    BusName(QDBusConnection bus, const QString& name, std::function<void()> changed);

    [[nodiscard]] bool isOwned() const { return !owner_.isEmpty(); }
    /// Its unique name; empty when nobody has the name, or that is not known yet.
    [[nodiscard]] const QString& owner() const { return owner_; }

 private:
    void ask(const QString& name);
    void setOwner(const QString& owner);

    QDBusConnection bus_;
    QDBusServiceWatcher watcher_;
    QString owner_;
    bool hasNews_ = false;
    std::function<void()> changed_;
};

} // namespace lorvane
