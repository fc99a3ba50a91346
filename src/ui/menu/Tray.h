// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "ui/menu/DBusMenu.h"
#include "ui/menu/MenuView.h"
#include "ui/menu/StatusHosts.h"
#include "ui/menu/StatusItem.h"

#include <QSystemTrayIcon>

namespace lorvane {

/// The icon in the tray with the menu: a status item on the session bus while somebody there shows one, else
/// a window in the tray of the X display, which comes and goes with that tray. Qt would ask for the former
/// only once in the life of a process, so the status item is our own. Main thread.
class Tray {
 public:
    /// `sayMissing`: called once in the life of this user's preferences, when there is no tray of either kind
    /// some time after the start.
    Tray(const Foundation& foundation, MenuModel& model, const QDBusConnection& session,
         std::function<void()> sayMissing);
    Tray(const Tray&) = delete;
    Tray& operator=(const Tray&) = delete;

    /// Whether there is a tray of either kind now.
    [[nodiscard]] bool isThere() const {
        return hosts_.hasHost() || QSystemTrayIcon::isSystemTrayAvailable();
    }

 private:
    void follow();
    void registerItem();
    void embed();
    void checkForTray();

    const Foundation foundation_;
    MenuModel& model_;
    QDBusConnection session_;
    std::function<void()> sayMissing_;
    /// A name of its own for each item, as the convention has it.
    QString itemService_;
    QObject itemObject_;
    QObject menuObject_;
    StatusHosts hosts_;
    std::unique_ptr<MenuView> embeddedMenu_;
    std::unique_ptr<QSystemTrayIcon> embedded_;
    Handle hostsWatch_;
    Handle patience_;
};

} // namespace lorvane
