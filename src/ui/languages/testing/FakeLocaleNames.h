// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/languages/LocaleNames.h"

#include <QHash>

namespace lorvane {

/// Knows the names it was given.
class FakeLocaleNames final : public LocaleNames {
 public:
    [[nodiscard]] QString nameOf(const QString& languageCode) const override {
        return names.value(languageCode);
    }
    [[nodiscard]] QString englishNameOf(const QString& languageCode) const override {
        return englishNames.value(languageCode);
    }
    [[nodiscard]] QString capitalised(const QString& name) const override {
        return name.left(1).toUpper() + name.mid(1);
    }

    QHash<QString, QString> names;
    QHash<QString, QString> englishNames;
};

} // namespace lorvane
