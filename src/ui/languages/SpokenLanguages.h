// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Preferences.h"

#include <QSet>

namespace lorvane {

/// The languages of a system that prefers these, "pt-BR" counted as "pt"; English is always one of them.
[[nodiscard]] QSet<QString> spokenLanguagesOf(const QStringList& preferred);

/// What the user says of the languages that are spoken into this computer. The preferences are written, not
/// read again: the choice is this object's. Main thread.
class SpokenLanguages {
 public:
    /// `systemLanguages`: as preferred, most wanted first.
    SpokenLanguages(Preferences& preferences, const QStringList& systemLanguages);

    [[nodiscard]] const QSet<QString>& languages() const { return languages_; }
    [[nodiscard]] bool autoDetect() const { return autoDetect_; }
    /// The one language that takes are sent in; empty when the backend tells the language.
    [[nodiscard]] const QString& speakLang() const { return speakLang_; }

    /// One language without auto-detection is the language of every take; in every other case the backend
    /// tells, and the set is kept only as what the user chose.
    void setLanguages(const QSet<QString>& languages, bool autoDetect);

 private:
    Preferences& preferences_;
    QSet<QString> languages_;
    bool autoDetect_ = true;
    QString speakLang_;
};

} // namespace lorvane
