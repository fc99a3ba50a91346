// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/menu/DBusMenuTree.h"
#include "ui/menu/MenuModel.h"

#include <QDBusAbstractAdaptor>
#include <QDBusContext>
#include <QDBusMessage>

namespace lorvane {

/// The menu on the session bus, for a tray that draws it (libdbusmenu's dbus-menu.xml, version 3).
class DBusMenu : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

 public:
    /// Lives as long as `parent`, the object that is registered on the bus.
    DBusMenu(QObject* parent, MenuModel& model);

    [[nodiscard]] static uint version() { return 3; }
    [[nodiscard]] static QString status() { return QStringLiteral("normal"); }
    [[nodiscard]] static QString textDirection();
    [[nodiscard]] static QStringList iconThemePath() { return {}; }

 public Q_SLOTS: // NOLINT(readability-redundant-access-specifiers)
    uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                   lorvane::DBusMenuLayout& layout);
    lorvane::DBusMenuItems GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames);
    QDBusVariant GetProperty(int id, const QString& name);
    void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
    QList<int> EventGroup(const lorvane::DBusMenuEvents& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

 Q_SIGNALS:
    void ItemsPropertiesUpdated(const lorvane::DBusMenuItems& updatedProps,
                                const lorvane::DBusMenuRemovals& removedProps);
    void LayoutUpdated(uint revision, int parent);
    void ItemActivationRequested(int id, uint timestamp);

 private:
    void refresh();

    MenuModel& model_;
    DBusMenuTree tree_;
    uint revision_ = 1;
    Handle subscription_;
};

} // namespace lorvane
