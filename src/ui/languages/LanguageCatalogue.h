// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <vector>

namespace lorvane {

struct Language {
    /// ISO 639: two letters where the language has two, else three.
    QString code;
    /// Its name in the language itself.
    QString ownName;
    friend bool operator==(const Language&, const Language&) = default;
};

/// Every language that a take can be translated into, in the order of every menu.
[[nodiscard]] const std::vector<Language>& translationLanguages();
/// Those of them that one can dictate in, in the same order.
[[nodiscard]] const std::vector<Language>& dictationLanguages();
[[nodiscard]] bool canDictateIn(const QString& code);
/// Empty for a code that the catalogue does not have.
[[nodiscard]] QString ownNameOf(const QString& code);

} // namespace lorvane
