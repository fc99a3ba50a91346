// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/languages/LocaleNames.h"

#include <QByteArray>

namespace lorvane {

/// Names of languages from the locale data of ICU.
class IcuLocaleNames final : public LocaleNames {
 public:
    /// `locale`: of the user, as in "de_AT" or "de-AT"; "C" and none read as English.
    explicit IcuLocaleNames(const QString& locale);

    [[nodiscard]] QString nameOf(const QString& languageCode) const override;
    [[nodiscard]] QString englishNameOf(const QString& languageCode) const override;
    [[nodiscard]] QString capitalised(const QString& name) const override;

 private:
    QByteArray locale_;
};

} // namespace lorvane
