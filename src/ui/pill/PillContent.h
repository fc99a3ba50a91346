// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Localisation.h"
#include "core/Phase.h"
#include "input/Hotkey.h"

#include <QString>

#include <functional>
#include <vector>

namespace lorvane {

/// A language by its code and in the user's words.
struct LanguageChoice {
    QString code;
    QString name;
    friend bool operator==(const LanguageChoice&, const LanguageChoice&) = default;
};

/// What the pill asks of the catalogue of languages.
struct PillLanguages {
    std::function<std::vector<LanguageChoice>()> translationTargets;
    std::function<QString(const QString& code)> displayName;
};

/// The words of the pill as values.
namespace pillContent {

/// A row of a chip's menu: choosing it stores the code.
struct MenuRow {
    QString label;
    QString code;
    bool isChosen = false;
    friend bool operator==(const MenuRow&, const MenuRow&) = default;
};

/// "AUTO", or the code in capitals, listed or not.
[[nodiscard]] QString speechLabel(const QString& code);
[[nodiscard]] QString speechTip(const Localisation& words);
[[nodiscard]] std::vector<MenuRow> speechMenu(const QString& chosen, const Localisation& words);

[[nodiscard]] QString microphoneTip(Hotkey hotkey, const Localisation& words);

/// The code in capitals; empty without one, where the chip shows a globe.
[[nodiscard]] QString translationLabel(const QString& code);
[[nodiscard]] QString translationTip(const QString& code, const PillLanguages& languages,
                                     const Localisation& words);
[[nodiscard]] QString translationTitle(const Localisation& words);
[[nodiscard]] std::vector<MenuRow> translationMenu(const QString& chosen, const PillLanguages& languages,
                                                   const Localisation& words);

[[nodiscard]] QString progressLabel(bool isTranslating, const Localisation& words);
/// What assistive technology says when the phase changes; a notice is told in its own words.
[[nodiscard]] QString announcement(const Phase& phase, bool isTranslating, const Localisation& words);

} // namespace pillContent

} // namespace lorvane
