// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Shell.h"

#include "base/PreferenceCatalogue.h"

#include <QLocale>

namespace lorvane {

namespace {

/// Of the language that the user reads the program in.
QString localeName(const Preferences& preferences) {
    const QStringList chosen = preferences.get(preference::appleLanguages);
    return chosen.isEmpty() ? QLocale::system().name() : chosen.first();
}

PillLanguages catalogue(const LanguageNames& languages) {
    return {[] {
                std::vector<LanguageChoice> targets;
                for (const Language& language : translationLanguages()) {
                    targets.push_back({language.code, language.ownName});
                }
                return targets;
            },
            [&languages](const QString& code) { return languages.displayName(code); }};
}

} // namespace

Shell::Shell(const Foundation& foundation, DesktopAdapters& desktop, DesktopPresence& presence,
             Dictation& dictation, std::function<void()> quit)
    : locale(localeName(foundation.preferences)), languages(locale), devices(desktop.inputs),
      updates(foundation.words, [&presence](const QString& text) { presence.notification.show(text); }),
      menu(foundation, languages,
           {dictation.controller, devices, updates,
            [&desktop] { desktop.accessibility.openAccessibilitySettings(); }, quit}),
      tray(foundation, menu, QDBusConnection::sessionBus(),
           [&presence, &words = foundation.words] {
               presence.notification.show(
                   words.text("This desktop has no tray. Lorvane's menu is on the pill: click it with the "
                              "right button."));
           }),
      presence_(presence) {
    desktop.session->watchOwnWindows();
    presence.host(std::make_unique<PillView>(
        foundation, PillView::World{dictation.status, presence.comfort, catalogue(languages),
                                    pillCommands(dictation, std::move(quit))}));
}

// The window outlives what its view looks at.
Shell::~Shell() { presence_.host(nullptr); }

PillCommands Shell::pillCommands(Dictation& dictation, std::function<void()> quit) {
    DictationController& controller = dictation.controller;
    return {[&recorder = dictation.recorder] { return recorder.level(); },
            [&controller] { return controller.hotkey(); },
            [&controller] { controller.startDictation(Source::toggle); },
            [&controller] { controller.stopDictation(); },
            [&controller] { controller.cancelProcessing(); },
            [&controller] { controller.hideBar(seconds(3600)); },
            std::move(quit),
            [this](QMenu& pillMenu) {
                if (tray.isThere()) {
                    return false;
                }
                fillMenu(pillMenu, menu);
                return true;
            }};
}

} // namespace lorvane
