// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Result.h"

#include <QHash>
#include <QString>
#include <QStringList>

namespace lorvane {

/// What the user reads. The key is the source text, or a symbolic name with a default text; the table of the
/// interface language gives the words of this desktop in that language. A key without an entry reads as its
/// default.
class Localisation {
 public:
    /// A table that has no entries: every text reads as its source.
    Localisation() = default;

    /// `table`: one JSON object, key to text. Gives the reason when it is not one.
    [[nodiscard]] static Result<Localisation, QString> fromJson(const QByteArray& table);

    /// The first of `wanted` ("de-AT" counts as "de") for which there is a table, else "en". `override` is
    /// the "AppleLanguages" preference and wins over `system`.
    [[nodiscard]] static QString chooseLanguage(const QStringList& override, const QStringList& system,
                                                const QStringList& available);

    [[nodiscard]] QString text(const QString& source) const { return text(source, source); }
    [[nodiscard]] QString text(const QString& key, const QString& fallback) const {
        return table_.value(key, fallback);
    }
    [[nodiscard]] bool contains(const QString& key) const { return table_.contains(key); }

 private:
    QHash<QString, QString> table_;
};

} // namespace lorvane
