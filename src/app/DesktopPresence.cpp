// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopPresence.h"

#include "base/PreferenceCatalogue.h"
#include "input/Hotkey.h"
#include "ui/menu/WaveformIcon.h"

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
                                 X11Connection& display, RecentDictations& dictations)
    : notification(session), appearance(session),
      factory(appearance,
              [foundation, &dictations] {
                  return std::make_unique<HomeModel>(foundation.words, dictations, holdKeyName(foundation));
              }),
      comfort(session, QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)),
      pillDesktop(display), pillSurface(display),
      pill(display.isAlive() ? std::make_unique<PillPanel>(foundation.clock, pillDesktop, pillSurface)
                             : nullptr),
      windows(foundation, factory,
              {[this](const QString& choice) { appearance.apply(choice); },
               [this](const QString& text) { notification.show(text); }}) {
    if (display.isAlive()) {
        QGuiApplication::setWindowIcon(waveformIcon());
    }
    applyPalette(appearance.isDark());
    QObject::connect(&appearance, &Appearance::darkChanged, &appearance,
                     [this] { applyPalette(appearance.isDark()); });
}

} // namespace lorvane
