// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/FragmentKeymap.h"

#include <QList>

#include <algorithm>

namespace lorvane {

namespace {

/// Letters, digits and punctuation: Chromium drops characters that come on other keys, Escape's above all.
const std::vector<std::uint32_t>& keysForText() {
    static const std::vector<std::uint32_t> keys = [] {
        std::vector<std::uint32_t> all;
        for (std::uint32_t key = 2; key <= 53; ++key) {
            const bool isText =
                key <= 13 || (key >= 16 && key <= 27) || (key >= 30 && key <= 41) || key >= 43;
            if (isText) {
                all.push_back(key);
            }
        }
        return all;
    }();
    return keys;
}

bool isTypeable(QChar unit) { return !unit.isSurrogate() && unit.category() != QChar::Other_Control; }

QByteArray describe(const QList<QChar>& characters) {
    QByteArray codes;
    QByteArray symbols;
    for (qsizetype i = 0; i < characters.size(); ++i) {
        const QByteArray key = "<K" + QByteArray::number(i) + ">";
        codes += key + "=" + QByteArray::number(keysForText()[static_cast<std::size_t>(i)] + 8) + ";";
        symbols += "key " + key + "{[U" +
                   QByteArray::number(characters[i].unicode(), 16).rightJustified(4, '0').toUpper() + "]};";
    }
    return "xkb_keymap{xkb_keycodes \"lorvane\"{minimum=8;maximum=255;" + codes +
           "};xkb_types \"lorvane\"{type \"ONE_LEVEL\"{modifiers=none;level_name[Level1]=\"Any\";};};"
           "xkb_compatibility \"lorvane\"{};xkb_symbols \"lorvane\"{name[Group1]=\"Lorvane\";" +
           symbols + "};};";
}

} // namespace

std::optional<FragmentKeymap> FragmentKeymap::of(const QString& text) {
    QList<QChar> characters;
    FragmentKeymap map;
    for (const QChar unit : text) {
        if (!isTypeable(unit)) {
            return std::nullopt;
        }
        qsizetype place = characters.indexOf(unit);
        if (place < 0) {
            place = characters.size();
            characters.append(unit);
        }
        if (static_cast<std::size_t>(place) >= keysForText().size()) {
            return std::nullopt;
        }
        map.keys.push_back(keysForText()[static_cast<std::size_t>(place)]);
    }
    if (map.keys.empty()) {
        return std::nullopt;
    }
    map.keymap = describe(characters);
    return map;
}

} // namespace lorvane
