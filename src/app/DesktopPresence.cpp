// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopPresence.h"

#include "base/PreferenceCatalogue.h"
#include "input/Hotkey.h"
#include "platform/linux/wayland/LayerPill.h"
#include "platform/linux/x11/X11PillDesktop.h"
#include "ui/menu/WaveformIcon.h"
#include "ui/pill/PillPanel.h"

#include <QGuiApplication>
#include <QStandardPaths>

namespace lorvane {

namespace {

QString holdKeyName(const Foundation& foundation) {
    const auto key = hotkeyFromRawName(foundation.preferences.get(preference::hotkey));
    return shortLabel(key.value_or(Hotkey::rightCommand), foundation.words);
}

} // namespace

DesktopPresence::DesktopPresence(const Foundation& foundation, const QDBusConnection& session,
                                 DesktopAdapters& desktop, RecentDictations& dictations)
    : notification(session), appearance(session),
      factory(appearance,
              [foundation, &dictations] {
                  return std::make_unique<HomeModel>(foundation.words, dictations, holdKeyName(foundation));
              }),
      comfort(session, QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)),
      windows(foundation, factory,
              {[this](const QString& choice) { appearance.apply(choice); },
               [this](const QString& text) { notification.show(text); }}) {
    makePill(foundation, desktop);
    if (desktop.hasDisplay()) {
        QGuiApplication::setWindowIcon(waveformIcon());
    }
    applyPalette(appearance.isDark());
    QObject::connect(&appearance, &Appearance::darkChanged, &appearance,
                     [this] { applyPalette(appearance.isDark()); });
}

void DesktopPresence::makePill(const Foundation& foundation, DesktopAdapters& desktop) {
    if (desktop.choice.pill == PillRoad::layerShell) {
        pill = LayerPill::open(desktop.wayland, desktop.seat, foundation.clock);
    }
    if (desktop.choice.pill != PillRoad::xWindow) {
        pill = pill ? std::move(pill) : std::make_unique<NoPill>();
        return;
    }
    pillDesktop = std::make_unique<X11PillDesktop>(desktop.display);
    pillSurface = std::make_unique<X11PillSurface>(desktop.display);
    pill = std::make_unique<PillPanel>(foundation.clock, *pillDesktop, *pillSurface);
}

} // namespace lorvane
