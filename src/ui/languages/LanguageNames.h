// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/languages/LanguageCatalogue.h"
#include "ui/languages/LocaleNames.h"

namespace lorvane {

/// The catalogue in the words of the user. Main thread.
class LanguageNames {
 public:
    explicit LanguageNames(const LocaleNames& names) : names_(names) {}

    /// "German (Deutsch)"; the own name alone when it says the same or when nobody knows another. A code that
    /// the catalogue does not have reads as its name alone, or as itself.
    [[nodiscard]] QString displayName(const QString& code) const;
    /// The dictation languages whose name for the user or whose English name holds `query`, in any case of
    /// letters; all of them for a blank one.
    [[nodiscard]] std::vector<Language> search(const QString& query) const;

 private:
    [[nodiscard]] QString capitalName(const QString& code) const;

    const LocaleNames& names_;
};

} // namespace lorvane
