// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/menu/Tray.h"

#include "base/DesktopPreferences.h"
#include "ui/menu/WaveformIcon.h"

#include <QCoreApplication>
#include <QCursor>
#include <QDBusMessage>
#include <QDBusPendingCall>

namespace lorvane {

namespace {

/// A panel may come up after the programs that start with the session.
constexpr Duration patience = std::chrono::seconds(10);

} // namespace

Tray::Tray(const Foundation& foundation, MenuModel& model, const QDBusConnection& session,
           std::function<void()> sayMissing)
    : foundation_(foundation), model_(model), session_(session), sayMissing_(std::move(sayMissing)),
      itemService_(QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid())),
      hosts_(session) {
    new StatusItem(&itemObject_, [&model] { model.activate(menu::open); });
    new DBusMenu(&menuObject_, model);
    session_.registerObject(StatusItem::path, &itemObject_);
    session_.registerObject(StatusItem::menuPath, &menuObject_);
    session_.registerService(itemService_);
    hostsWatch_ = hosts_.subscribe([this] { follow(); });
    patience_ = foundation_.clock.after(patience, [this] { checkForTray(); });
}

void Tray::follow() {
    if (hosts_.hasHost()) {
        embedded_.reset();
        embeddedMenu_.reset();
        registerItem();
    } else if (!embedded_) {
        embed();
    }
}

void Tray::registerItem() {
    auto call = QDBusMessage::createMethodCall(StatusHosts::watcherService, StatusHosts::watcherPath,
                                               StatusHosts::watcherService,
                                               QStringLiteral("RegisterStatusNotifierItem"));
    call << itemService_;
    session_.asyncCall(call);
    foundation_.log.diagLog("[lorvane-tray] shown as a status item");
}

// Without a tray on the display the icon waits for one.
void Tray::embed() {
    embeddedMenu_ = std::make_unique<MenuView>(model_);
    embedded_ = std::make_unique<QSystemTrayIcon>(waveformIcon());
    embedded_->setToolTip(StatusItem::title());
    embedded_->setContextMenu(&embeddedMenu_->menu());
    QObject::connect(embedded_.get(), &QSystemTrayIcon::activated, &embeddedMenu_->menu(),
                     [menu = &embeddedMenu_->menu()](QSystemTrayIcon::ActivationReason reason) {
                         if (reason == QSystemTrayIcon::Trigger) {
                             menu->popup(QCursor::pos());
                         }
                     });
    embedded_->show();
    foundation_.log.diagLog("[lorvane-tray] nobody shows status items; waiting in the tray of the display");
}

void Tray::checkForTray() {
    if (isThere() || foundation_.preferences.get(preference::trayMissingTold)) {
        return;
    }
    foundation_.preferences.set(preference::trayMissingTold, true);
    sayMissing_();
}

} // namespace lorvane
