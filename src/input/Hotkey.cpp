// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/Hotkey.h"

#include "input/KeyEvents.h"

namespace lorvane {

namespace {

struct Row {
    Hotkey hotkey;
    QLatin1String rawName;
    int code;
    std::uint32_t mask;
    const char* label;
    const char* shortLabel;
};

// In the order of the enumeration.
const std::array<Row, allHotkeys.size()> rows{{
    {Hotkey::rightCommand, QLatin1String("rightCommand"), keyCode::rightCommand, modifierFlag::command,
     "Hold right ⌘", "right ⌘"},
    {Hotkey::rightOption, QLatin1String("rightOption"), keyCode::rightOption, modifierFlag::option,
     "Hold right ⌥", "right ⌥"},
    {Hotkey::rightShift, QLatin1String("rightShift"), keyCode::rightShift, modifierFlag::shift,
     "Hold right ⇧", "right ⇧"},
    {Hotkey::rightControl, QLatin1String("rightControl"), keyCode::rightControl, modifierFlag::control,
     "Hold right ⌃", "right ⌃"},
    {Hotkey::fn, QLatin1String("fn"), keyCode::fn, modifierFlag::function, "Hold fn (🌐)", "fn"},
}};

const Row& rowOf(Hotkey hotkey) { return rows[static_cast<std::size_t>(hotkey)]; }

} // namespace

QLatin1String rawName(Hotkey hotkey) { return rowOf(hotkey).rawName; }

std::optional<Hotkey> hotkeyFromRawName(const QString& name) {
    for (const Row& row : rows) {
        if (name == row.rawName) {
            return row.hotkey;
        }
    }
    return std::nullopt;
}

int codeOf(Hotkey hotkey) { return rowOf(hotkey).code; }

std::uint32_t maskOf(Hotkey hotkey) { return rowOf(hotkey).mask; }

// words: hotkey.label.rightCommand hotkey.label.rightOption hotkey.label.rightShift hotkey.label.rightControl
// words: hotkey.label.fn hotkey.short.rightCommand hotkey.short.rightOption hotkey.short.rightShift
// words: hotkey.short.rightControl hotkey.short.fn

QString label(Hotkey hotkey, const Localisation& words) {
    const Row& row = rowOf(hotkey);
    return words.text(QLatin1String("hotkey.label.") + row.rawName, QString::fromUtf8(row.label));
}

QString shortLabel(Hotkey hotkey, const Localisation& words) {
    const Row& row = rowOf(hotkey);
    return words.text(QLatin1String("hotkey.short.") + row.rawName, QString::fromUtf8(row.shortLabel));
}

} // namespace lorvane
