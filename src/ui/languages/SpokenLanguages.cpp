// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/languages/SpokenLanguages.h"

#include "base/PreferenceCatalogue.h"

namespace lorvane {

QSet<QString> spokenLanguagesOf(const QStringList& preferred) {
    QSet<QString> languages;
    for (const QString& language : preferred) {
        languages.insert(language.section(u'-', 0, 0).toLower());
    }
    languages.insert(QStringLiteral("en"));
    return languages;
}

SpokenLanguages::SpokenLanguages(Preferences& preferences, const QStringList& systemLanguages)
    : preferences_(preferences), languages_(spokenLanguagesOf(systemLanguages)),
      speakLang_(preferences.get(preference::speakLang)) {}

void SpokenLanguages::setLanguages(const QSet<QString>& languages, bool autoDetect) {
    languages_ = languages;
    autoDetect_ = autoDetect;
    speakLang_ = !autoDetect && languages.size() == 1 ? *languages.begin() : QString();
    QStringList chosen(languages.begin(), languages.end());
    chosen.sort(); // so that the same choice is the same file
    preferences_.set(preference::speakLang, speakLang_);
    preferences_.set(preference::speakLangs, chosen);
    preferences_.set(preference::autoDetect, autoDetect);
}

} // namespace lorvane
