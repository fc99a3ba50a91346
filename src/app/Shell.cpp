// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Shell.h"

#include "base/PreferenceCatalogue.h"

#include <QCoreApplication>
#include <QLocale>

namespace lorvane {

namespace {

/// Of the language that the user reads the program in.
QString localeName(const Preferences& preferences) {
    const QStringList chosen = preferences.get(preference::appleLanguages);
    return chosen.isEmpty() ? QLocale::system().name() : chosen.first();
}

} // namespace

Shell::Shell(const Foundation& foundation, DesktopAdapters& desktop, DesktopPresence& presence,
             Dictation& dictation, std::function<void()> quit)
    : locale(localeName(foundation.preferences)), languages(locale), devices(desktop.inputs),
      updates(foundation.words, [&presence](const QString& text) { presence.notification.show(text); }),
      menu(foundation, languages,
           {dictation.controller, devices, updates,
            [&desktop] { desktop.accessibility.openAccessibilitySettings(); }, std::move(quit)}),
      tray(foundation, menu, QDBusConnection::sessionBus(),
           [&presence, &words = foundation.words] {
               presence.notification.show(
                   words.text("This desktop has no tray. Lorvane's menu is on the pill: click it with the "
                              "right button."));
           }),
      ownKeys(desktop.keyEvents) {
    QCoreApplication::instance()->installNativeEventFilter(&ownKeys);
}

} // namespace lorvane
