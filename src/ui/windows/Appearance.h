// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

namespace lorvane {

/// Light or dark: what the user chose, or what the desktop says (org.freedesktop.appearance of the settings
/// portal; light where there is no portal). Main thread.
class Appearance : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool dark READ isDark NOTIFY darkChanged)

 public:
    explicit Appearance(QDBusConnection session);

    /// "light" or "dark"; any other word follows the desktop.
    void apply(const QString& choice);
    [[nodiscard]] bool isDark() const { return isDark_; }

 Q_SIGNALS:
    void darkChanged();

 private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
    void askDesktop();
    void refresh();

    QDBusConnection session_;
    QString choice_;
    bool desktopIsDark_ = false;
    bool isDark_ = false;
};

/// The colours of our menus.
void applyPalette(bool dark);

} // namespace lorvane
