// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/LanguageTable.h"

#include "base/PreferenceCatalogue.h"

#include <QDir>
#include <QFile>
#include <QLocale>

namespace lorvane {

namespace {

const QString tableFolder = QStringLiteral(":/translations");

QStringList availableLanguages() {
    QStringList codes;
    for (const QString& file : QDir(tableFolder).entryList({QStringLiteral("*.json")})) {
        codes.append(file.chopped(5));
    }
    return codes;
}

} // namespace

Localisation loadWords(const Preferences& preferences, DiagnosticLog& log) {
    const QString code = Localisation::chooseLanguage(preferences.get(preference::appleLanguages),
                                                      QLocale::system().uiLanguages(), availableLanguages());
    QFile file(tableFolder + u'/' + code + QStringLiteral(".json"));
    if (!file.open(QIODevice::ReadOnly)) {
        log.diagLog(QStringLiteral("[lorvane-words] no table for \"%1\"").arg(code));
        return {};
    }
    auto words = Localisation::fromJson(file.readAll());
    if (!words) {
        log.diagLog(
            QStringLiteral("[lorvane-words] the table \"%1\" is unusable: %2").arg(code, words.error()));
        return {};
    }
    return std::move(*words);
}

} // namespace lorvane
