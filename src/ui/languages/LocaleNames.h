// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace lorvane {

/// How languages are called. Any thread; nothing fails, a name that nobody knows is empty.
class LocaleNames {
 public:
    virtual ~LocaleNames() = default;
    /// In the language that the user reads, as it stands in the middle of a sentence.
    [[nodiscard]] virtual QString nameOf(const QString& languageCode) const = 0;
    [[nodiscard]] virtual QString englishNameOf(const QString& languageCode) const = 0;
    /// With its first letter in upper case, by the rules of the language that the user reads.
    [[nodiscard]] virtual QString capitalised(const QString& name) const = 0;
};

} // namespace lorvane
