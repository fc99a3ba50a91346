// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillContent.h"

namespace lorvane::pillContent {

QString speechLabel(const QString& code) { return code.isEmpty() ? QStringLiteral("AUTO") : code.toUpper(); }

QString speechTip(const Localisation& words) { return words.text("Change language"); }

std::vector<MenuRow> speechMenu(const QString& chosen, const Localisation& words) {
    std::vector<MenuRow> rows{{words.text("Auto-detect"), {}},
                              {QStringLiteral("Русский"), QStringLiteral("ru")},
                              {QStringLiteral("English"), QStringLiteral("en")}};
    for (MenuRow& row : rows) {
        row.isChosen = row.code == chosen;
    }
    return rows;
}

QString microphoneTip(Hotkey hotkey, const Localisation& words) {
    return words.text("Dictate — or hold %1").arg(shortLabel(hotkey, words));
}

QString translationLabel(const QString& code) { return code.toUpper(); }

QString translationTip(const QString& code, const PillLanguages& languages, const Localisation& words) {
    return code.isEmpty() ? translationTitle(words)
                          : words.text("Translating → %1").arg(languages.displayName(code));
}

QString translationTitle(const Localisation& words) { return words.text("Translate to"); }

std::vector<MenuRow> translationMenu(const QString& chosen, const PillLanguages& languages,
                                     const Localisation& words) {
    std::vector<MenuRow> rows{{words.text("Off"), {}, chosen.isEmpty()}};
    for (const LanguageChoice& target : languages.translationTargets()) {
        rows.push_back({target.name, target.code, target.code == chosen});
    }
    return rows;
}

QString progressLabel(bool isTranslating, const Localisation& words) {
    return isTranslating ? words.text("Translating") : words.text("Cleaning up");
}

QString announcement(const Phase& phase, bool isTranslating, const Localisation& words) {
    if (isIn<Recording>(phase)) {
        return words.text("Listening");
    }
    if (isIn<Processing>(phase)) {
        return progressLabel(isTranslating, words);
    }
    if (isIn<Done>(phase)) {
        return words.text("Inserted");
    }
    if (const auto* const notice = std::get_if<Notice>(&phase)) {
        return notice->text;
    }
    return words.text("Ready to dictate");
}

} // namespace lorvane::pillContent
