// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/languages/LanguageNames.h"

#include <algorithm>
#include <iterator>

namespace lorvane {

namespace {

// The dotted I of Turkish leaves a dot of its own behind when it is lowered, which nobody types.
QString folded(const QString& text) {
    constexpr char16_t combiningDotAbove = 0x0307;
    return text.toLower().remove(QChar(combiningDotAbove));
}

} // namespace

QString LanguageNames::capitalName(const QString& code) const {
    const QString name = names_.nameOf(code);
    return name.isEmpty() ? name : names_.capitalised(name);
}

QString LanguageNames::displayName(const QString& code) const {
    const QString name = capitalName(code);
    const QString ownName = ownNameOf(code);
    if (name.isEmpty()) {
        return ownName.isEmpty() ? code : ownName;
    }
    return ownName.isEmpty() || ownName == name ? name : QStringLiteral("%1 (%2)").arg(name, ownName);
}

std::vector<Language> LanguageNames::search(const QString& query) const {
    const QString wanted = folded(query.trimmed());
    if (wanted.isEmpty()) {
        return dictationLanguages();
    }
    const auto fits = [&](const Language& language) {
        const QString name = capitalName(language.code);
        return folded(name.isEmpty() ? language.ownName : name).contains(wanted) ||
               folded(names_.englishNameOf(language.code)).contains(wanted);
    };
    std::vector<Language> found;
    std::copy_if(dictationLanguages().begin(), dictationLanguages().end(), std::back_inserter(found), fits);
    return found;
}

} // namespace lorvane
