// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/menu/DBusMenuTypes.h"

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>

#include <functional>

namespace lorvane {

/// The icon in the tray as org.kde.StatusNotifierItem describes it (freedesktop.org's StatusNotifierItem).
class StatusItem : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconName READ iconName CONSTANT)
    Q_PROPERTY(lorvane::StatusPixmaps IconPixmap READ iconPixmap CONSTANT)
    Q_PROPERTY(lorvane::StatusToolTip ToolTip READ toolTip CONSTANT)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

 public:
    static inline const QString path = QStringLiteral("/StatusNotifierItem");
    static inline const QString menuPath = QStringLiteral("/MenuBar");

    /// Lives as long as `parent`. `open`: what a host does with a click that does not show the menu.
    StatusItem(QObject* parent, std::function<void()> open);

    [[nodiscard]] static QString category() { return QStringLiteral("ApplicationStatus"); }
    [[nodiscard]] static QString id() { return QStringLiteral("lorvane"); }
    [[nodiscard]] static QString title() { return QStringLiteral("Lorvane"); }
    [[nodiscard]] static QString status() { return QStringLiteral("Active"); }
    [[nodiscard]] static int windowId() { return 0; }
    [[nodiscard]] static QString iconName() { return {}; }
    [[nodiscard]] static StatusPixmaps iconPixmap();
    [[nodiscard]] static StatusToolTip toolTip();
    [[nodiscard]] static bool itemIsMenu() { return true; }
    [[nodiscard]] static QDBusObjectPath menu() { return QDBusObjectPath(menuPath); }

 public Q_SLOTS: // NOLINT(readability-redundant-access-specifiers)
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void ContextMenu(int x, int y);
    void Scroll(int delta, const QString& orientation);

 Q_SIGNALS:
    void NewIcon();
    void NewTitle();
    void NewToolTip();
    void NewStatus(const QString& status);

 private:
    std::function<void()> open_;
};

} // namespace lorvane
