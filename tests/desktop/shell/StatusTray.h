// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QStringList>

namespace lorvane {

// A tray as desktops have it: org.kde.StatusNotifierWatcher on the session bus, with or without a host.
class StatusTray : public QObject {
    Q_OBJECT
 public:
    explicit StatusTray(bool hasHost = true);
    ~StatusTray() override;

    void setHost(bool hasHost);
    // The bus names that were registered, in order.
    QStringList items;
    bool hasHost_;

 private:
    QDBusConnection bus_;
};

class StatusTrayAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
 public:
    explicit StatusTrayAdaptor(StatusTray* tray) : QDBusAbstractAdaptor(tray), tray_(*tray) {}
    bool hasHost() const { return tray_.hasHost_; }
    static int protocolVersion() { return 0; }
 public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service) { tray_.items.append(service); }
 Q_SIGNALS:
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();

 private:
    StatusTray& tray_;
};

// One entry as the tray reads it over the bus; children in order.
struct TrayEntry {
    int id = 0;
    QVariantMap properties;
    QList<TrayEntry> children;
    QString label() const { return properties.value(QStringLiteral("label")).toString(); }
    bool isOn() const { return properties.value(QStringLiteral("toggle-state")).toInt() == 1; }
};

// The menu behind a status item, read and clicked as a tray does it.
class TrayMenu {
 public:
    explicit TrayMenu(const QString& service) : service_(service) {}
    QVariant itemProperty(const QString& name) const;
    TrayEntry read() const;
    // "-" for a divider.
    QStringList labels() const;
    // The entry at this path of labels; id 0 when there is none.
    TrayEntry entry(const QStringList& path) const;
    // False when there is no such entry.
    bool click(const QStringList& path) const;

 private:
    QString service_;
};

} // namespace lorvane
