// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "platform/linux/appearance/ComfortSettings.h"
#include "ui/pill/DesktopComfort.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QHash>
#include <QObject>

namespace lorvane {

/// Motion and contrast as the desktop portal tells them (org.freedesktop.portal.Settings), followed while the
/// program runs; without a portal, as GTK's settings say at the start. Any setting that asks for it is
/// enough. Main thread; nothing waits for the bus.
class PortalComfort final : public QObject, public DesktopComfort {
    Q_OBJECT

 public:
    /// `configFolder`: the folder of per-user settings.
    PortalComfort(QDBusConnection session, const QString& configFolder);

    [[nodiscard]] bool wantsLessMotion() const override { return lessMotion_; }
    [[nodiscard]] bool wantsMoreContrast() const override { return moreContrast_; }
    [[nodiscard]] Handle onChange(std::function<void()> observer) override {
        return changed_.subscribe([observer = std::move(observer)] { observer(); });
    }

 private Q_SLOTS:
    void onSettingChanged(const QString& space, const QString& key, const QDBusVariant& value);

 private:
    void askPortal();
    void takeAnswer(const QDBusMessage& answer);
    void judge();

    QDBusConnection session_;
    QHash<QString, ComfortWish> wishes_;
    bool lessMotion_ = false;
    bool moreContrast_ = false;
    Signal<> changed_;
};

} // namespace lorvane
